// A locale with a decimal comma, for tests that stored numbers don't follow it.
// Few machines have one installed, so it is made.
#pragma once

#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace qxtest {

/// While it lives the program's locale writes one and a half as "1,5". False
/// where no such locale can be made, which leaves the C locale in force.
class CommaLocale {
public:
  CommaLocale() {
    std::filesystem::create_directories(folder_);
    std::ofstream(folder_ / "source") << "comment_char %\nescape_char /\nLC_NUMERIC\n"
                                         "decimal_point \"<U002C>\"\nthousands_sep \"\"\n"
                                         "grouping -1\nEND LC_NUMERIC\n";
    const std::string command = "cd " + folder_.string() +
                                " && localedef --no-archive -c -i source -f ANSI_X3.4-1968 "
                                "./comma >/dev/null 2>&1";
    // The status tells of missing categories, which don't matter.
    [[maybe_unused]] const int status = std::system(command.c_str());
    ::setenv("LOCPATH", folder_.c_str(), 1);
    set_ = std::setlocale(LC_NUMERIC, "comma") != nullptr;
  }
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    ::unsetenv("LOCPATH");
    std::filesystem::remove_all(folder_);
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  explicit operator bool() const { return set_ && *std::localeconv()->decimal_point == ','; }

private:
  const std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() / ("qxcomma" + std::to_string(::getpid()));
  bool set_ = false;
};

}  // namespace qxtest
