#include <qxsystem/qxb/qxheader.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qxsystem/core/base_private.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/core/version.h>
#include <qxsystem/interface/files.h>
#include <qxsystem/platform/clock.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/qxtokenize.h>

namespace QXSystem {

template class QXBaseDataT<QXHeader>;

QXHeader::QXHeader() = default;
QXHeader::QXHeader(const QXHeader& other) = default;
QXHeader::QXHeader(QXHeader&& other) noexcept = default;
QXHeader& QXHeader::operator=(const QXHeader& other) = default;
QXHeader& QXHeader::operator=(QXHeader&& other) noexcept = default;
QXHeader::~QXHeader() = default;

QXHeader::QXHeader(int argc, char** argv, const char* program, const char* version,
                   const char* comment, const QXInterface& itf, const QXHeader* parent) {
  if (argc == 0) QXThrow.Warning("Warning: no command line arguments in QXHeader construction.");
  const std::vector<std::string> arguments(argv + std::clamp(argc, 0, 1), argv + std::max(argc, 0));
  SetProgram(program);
  SetVersion(version);
  SetCommandLine(QXStringJoin(arguments, " "));
  SetInterface(itf);
  SetComment(comment);
  SetDate();
  SetQXRelease(QXSystemGetRelease());
  SetQXVersion(static_cast<int>(QXSystemGetVersion()));
  SetPlatform(QXSystemGetPlatform());
  if (parent) AddHistory(*parent);
}

const void* QXHeader::GetDataType() const {
  return QXGetDataType<QXHeader>();
}

bool QXHeader::IsDataType(const void* id) const {
  return id == QXGetDataType<QXHeader>() || QXContainer::IsDataType(id);
}

QXHeader* QXHeader::CreateCopy() const {
  return new QXHeader(*this);
}

namespace {

std::size_t CountItems(const QXBase& object) {
  const auto* items = QXBaseAccess::Items(object);
  return items ? items->size() : 0;
}

}  // namespace

QXHeader::operator bool() const {
  return CountItems(*this) != 0;
}

// ---- Values ----

const std::string& QXHeader::GetProgram() const {
  return GetData<std::string>("program");
}
const std::string& QXHeader::GetVersion() const {
  return GetData<std::string>("version");
}
const std::string& QXHeader::GetCommandLine() const {
  return GetData<std::string>("commandline");
}
const std::string& QXHeader::GetComment() const {
  return GetData<std::string>("comment");
}
const std::string& QXHeader::GetInterface() const {
  return GetData<std::string>("itf");
}
const std::string& QXHeader::GetQXRelease() const {
  return GetData<std::string>("qx_release");
}
const std::string& QXHeader::GetPlatform() const {
  return GetData<std::string>("platform");
}
int QXHeader::GetQXVersion() const {
  return GetData<int>("qx_version");
}

void QXHeader::GetDate(int& day, int& month, int& year) const {
  day = GetData<int>("day");
  month = GetData<int>("month");
  year = GetData<int>("year");
}

void QXHeader::GetDate(int& day, int& month, int& year, int& hour, int& minutes,
                       int& seconds) const {
  GetDate(day, month, year);
  hour = GetData<int>("hour");
  minutes = GetData<int>("minutes");
  seconds = GetData<int>("seconds");
}

bool QXHeader::SetProgram(const std::string& program) {
  return SetData<std::string>("program", program);
}
bool QXHeader::SetVersion(const std::string& version) {
  return SetData<std::string>("version", version);
}
bool QXHeader::SetCommandLine(const std::string& line) {
  return SetData<std::string>("commandline", line);
}
bool QXHeader::SetComment(const std::string& comment) {
  return SetData<std::string>("comment", comment);
}
bool QXHeader::SetQXRelease(const std::string& release) {
  return SetData<std::string>("qx_release", release);
}
bool QXHeader::SetPlatform(const std::string& platform) {
  return SetData<std::string>("platform", platform);
}
bool QXHeader::SetQXVersion(int version) {
  return SetData<int>("qx_version", version);
}

bool QXHeader::SetInterface(const QXInterface& itf) {
  QXPlatform::qxosstream out;
  return QXWriteSettings(itf, out, /*all=*/true, /*mode=*/"") &&
         SetData<std::string>("itf", out.str());
}

bool QXHeader::SetDate(int day, int month, int year, int hour, int minutes, int seconds) {
  bool good = true;
  for (const auto& [name, value] : {std::pair("day", day),
                                    {"month", month},
                                    {"year", year},
                                    {"hour", hour},
                                    {"minutes", minutes},
                                    {"seconds", seconds}})
    good &= SetData<int>(name, value);
  return good;
}

bool QXHeader::SetDate(int day, int month, int year) {
  return SetDate(day, month, year, 0, 0, 0);
}

bool QXHeader::SetDate() {
  std::tm now;
  if (!QXPlatform::QXCurrentTime(&now)) {
    QXThrow.Warning("QXCurrentTime failed to return a usable time");
    return false;
  }
  return SetDate(now.tm_mday, now.tm_mon + 1, now.tm_year + 1900, now.tm_hour + 1, now.tm_min + 1,
                 now.tm_sec + 1);
}

// ---- Earlier headers ----

namespace {

// Whether a tag is the name of an earlier header: a number below `count` in
// decimal.
bool IsHistory(unsigned tag, unsigned count) {
  const std::string name = QXGetTag(tag);
  unsigned number;
  const auto parsed = std::from_chars(name.data(), name.data() + name.size(), number);
  return parsed.ec == std::errc() && number < count && name == std::to_string(number);
}

}  // namespace

// The number comes from files. Headers may be missing, as in a header that became
// part of another's history, but so many only from damage.
unsigned QXHeader::CountHistory() const {
  constexpr std::size_t missing = 4096;
  const int stored = std::max(GetData<int>("history"), 0);
  return static_cast<unsigned>(
      std::min<std::size_t>(static_cast<unsigned>(stored), CountItems(*this) + missing));
}

// A name that nobody has used is the name of no item, and asking must not give it
// a tag.
QXIterBase<QXHeader>* QXHeader::GetHistory() const {
  auto headers = std::make_unique<std::vector<QXHeader>>();
  for (unsigned i = CountHistory(); i-- > 0;) {
    const std::string name = std::to_string(i);
    headers->push_back(QXHasTag(name) ? GetData<QXHeader>(QXGetTag(name)) : QXHeader());
  }
  return new QXCacheIter<QXHeader>(headers.release(), /*owned=*/true);
}

// Taking the headers inside `other` out of a copy one by one would cost the
// square of their number.
bool QXHeader::AddHistory(const QXHeader& other) {
  QXHeader parent;
  const unsigned inside = other.CountHistory();
  if (const auto* items = QXBaseAccess::Items(other))
    for (const QXBaseData* item : *items)
      if (!IsHistory(item->GetTag(), inside)) parent.AddBaseData(item);

  unsigned count = CountHistory();
  const auto add = [this, &count](QXHeader header) {
    const QXBaseDataT<QXHeader> item(QXGetTag(std::to_string(count++)), std::move(header));
    SetBaseData(&item);
  };
  for (QXIter<QXHeader> header = other.GetHistory(); header; ++header) add(std::move(*header));
  add(std::move(parent));
  return SetData<int>("history", static_cast<int>(count));
}

}  // namespace QXSystem
