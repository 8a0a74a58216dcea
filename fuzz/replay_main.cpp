// Runs a fuzz target over every file of a corpus, without a fuzzer: what was
// once found stays mended. A corpus that is missing or empty is a failure, as
// it would test nothing.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s CORPUS-DIRECTORY\n", argv[0]);
    return 2;
  }
  std::vector<std::filesystem::path> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1], error))
    if (entry.is_regular_file()) files.push_back(entry.path());
  if (files.empty()) {
    std::fprintf(stderr, "%s holds no inputs\n", argv[1]);
    return 1;
  }
  std::sort(files.begin(), files.end());

  for (const auto& file : files) {
    std::printf("%s\n", file.filename().c_str());
    std::fflush(stdout);  // names the culprit when the target aborts
    std::ifstream in(file, std::ios::binary);
    if (!in) {
      std::fprintf(stderr, "cannot read %s\n", file.c_str());
      return 1;
    }
    // A block of exactly the input's size lets a sanitizer see any read past it.
    const std::string bytes((std::istreambuf_iterator<char>(in)), {});
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  std::printf("%zu inputs\n", files.size());
  return 0;
}
