// Command lines with a parameter file: whatever is accepted can be written as
// settings and read back to the same values. Lines up to the first empty one are
// arguments, the rest is the parameter file.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/files.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

#include "require.h"

using namespace QXSystem;
using QXPlatform::qxisstream;
using QXPlatform::qxosstream;

namespace {

constexpr char text[] = R"(
!PARAMETER -in 1
  !TYPE string
  !KEYLESS 1
  !ALIAS -i
  !ILLEGAL_VALUE *.bad
!END
!PARAMETER -out
  !TYPE string
  !KEYLESS 2
  !LIST true
!END
!PARAMETER -n
  !TYPE int
  !DEFAULT 5
  !LEGAL_RANGE 1 inf
!END
!PARAMETER -u
  !TYPE unsigned
  !LIST true
  !ILLEGAL_VALUE 13
  !DEFAULT 1
  !DEFAULT 2
!END
!PARAMETER -f
  !TYPE float
  !LIST true
!END
!PARAMETER -d
  !TYPE double
  !ILLEGAL_RANGE 1 2
!END
!CATEGORY Switches
  !PARAMETER -b
    !TYPE bool
    !DEFAULT true
  !END
  !PARAMETER -l
    !TYPE bool
    !LIST true
    !VISIBILITY hidden
  !END
  !PARAMETER -c
    !TYPE const
    !LEGAL_VALUE 3
    !LEGAL_VALUE three
    !LEGAL_VALUE 4
  !END
!END
!PARAMETER -param
  !TYPE param_file
!END
)";

constexpr char requirements[] =
    "!REQUIREMENT\n!OPTION -in !-n 7\n!OPTION -c three\n!OPTION -b true !-out\n!END\n";

constexpr char switches[] =
    "!PARAMETER -a\n!TYPE bool\n!DEFAULT 0\n!END\n!PARAMETER -b\n!TYPE bool\n!DEFAULT 0\n"
    "!END\n!PARAMETER -n\n!TYPE int\n!KEYLESS 1\n!END\n"
    "!PARAMETER -s\n!TYPE string\n!KEYLESS 2\n!LIST 1\n!END\n";

const unsigned char* Bytes(const char* chars) {
  return reinterpret_cast<const unsigned char*>(chars);
}

// The typed values of all parameters.
std::vector<std::string> Values(const QXInterface& interface) {
  std::vector<std::string> values;
  for (QXIter<QXParameter> p = interface.GetParameters(true); p; ++p) {
    std::vector<unsigned char> buffer(p->ValueAndDefaultBinarySize());
    REQUIRE(p->WriteValueAndDefaultBinary(buffer.data()) == buffer.size());
    values.emplace_back(buffer.begin(), buffer.end());
  }
  return values;
}

// Settings escape nothing.
bool CanBeReadAgain(const QXInterface& interface) {
  for (QXIter<QXParameter> p = interface.GetParameters(true); p; ++p)
    for (QXIter<const std::string> value = p->GetStringValues(); value; ++value)
      if (value->empty() || value->find_first_of("'\"\r\n") != value->npos) return false;
  return true;
}

void CheckSettings(const QXInterface& interface, bool all) {
  qxosstream out;
  REQUIRE(QXWriteSettings(interface, out, all, "fuzz"));
  QXInterface again(text);
  qxisstream in(out.str());
  REQUIRE(QXParseParameterFile(again, in, /*overwrite=*/false, QXErrorLevel::Warning));
  REQUIRE(Values(again) == Values(interface));
}

// A file that has no place in a directory, and its name.
struct File {
  explicit File(const std::string& bytes) : fd(::memfd_create("fuzz", 0)) {
    REQUIRE(fd >= 0 && ::write(fd, bytes.data(), bytes.size()) == static_cast<long>(bytes.size()));
  }
  ~File() { ::close(fd); }
  std::string Name() const { return "/proc/self/fd/" + std::to_string(fd); }
  int fd;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QXThrow.SetLevel(QXErrorLevel::Quiet);
  QXThrow.SetStrict(false);
  qxisstream in(std::string(data, data + size));
  std::vector<std::string> words = {"prog"};
  for (std::string line; in.getline(line) && !line.empty();) words.push_back(line.c_str());
  std::string settings;
  in.read(settings);
  const File file(settings);
  for (std::string& word : words) {
    if (word == "--version") return 0;  // ends the process
    if (word == "@") word = file.Name();
  }

  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const int argc = static_cast<int>(words.size());

  QXInterface interface(text);
  if (words.size() > 2 && words[1] == "--help" && words[2] != "html") {
    qxosstream out;
    REQUIRE(QXCheckHelp(interface, argc, argv.data(), true, out) == (argc <= 4));
  }
  if (QXParseCommandLine(interface, argc, argv.data(), Bytes(requirements), QXErrorLevel::Warning,
                         /*checkHelp=*/false) &&
      CanBeReadAgain(interface)) {
    CheckSettings(interface, true);
    CheckSettings(interface, false);
  }
  QXInterface light(switches);
  (void)QXParseCommandLineLW(light, argc, argv.data(), nullptr, QXErrorLevel::Warning);
  return 0;
}
