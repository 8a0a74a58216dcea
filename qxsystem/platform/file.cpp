#include <qxsystem/platform/file.h>

#include <sys/stat.h>

namespace QXPlatform {

QXFile::QXFile(const std::string& name) : name_(name) {}

bool QXFile::Exists() const {
  struct stat status;
  return ::stat(name_.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

long QXFile::Size() const {
  struct stat status;
  return ::stat(name_.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}

std::string QXFileDetermineName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);  // without any, npos + 1 is 0
}

}  // namespace QXPlatform
