// Configuration texts: what is written makes the same tree again, and a stream
// and a text are read alike.

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>

#include <qxsystem/core/error.h>
#include <qxsystem/core/nesting.h>
#include <qxsystem/interface/files.h>
#include <qxsystem/interface/help.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

#include "require.h"

using namespace QXSystem;
using QXPlatform::qxisstream;
using QXPlatform::qxosstream;

namespace {

std::string Written(const QXInterface& interface) {
  qxosstream out;
  REQUIRE(QXWriteInterfaceConfigurationFile(interface, out));
  return out.str();
}

// The lines without the blanks at their beginnings: the detail of a category is
// written four blanks deeper than it was.
std::string Flat(const std::string& text) {
  std::string flat;
  bool begin = true;
  for (const char c : text) {
    if (begin && (c == ' ' || c == '\t')) continue;
    begin = c == '\n';
    flat += c;
  }
  return flat;
}

unsigned Depth(const QXInterface& interface) {
  unsigned depth = 0;
  for (QXIter<QXInterface> child = interface.GetInterfaces(false); child; ++child)
    depth = std::max(depth, Depth(*child));
  return depth + 1;
}

// A category that is named like one elsewhere may be taken for that one when it
// is read again, and one that lies too deep is refused.
bool CanBeReadAgain(const QXInterface& interface) {
  std::set<std::string> names;
  for (QXIter<QXInterface> child = interface.GetInterfaces(true); child; ++child)
    if (!names.insert(child->GetName()).second) return false;
  return Depth(interface) < QXMaxNesting;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QXThrow.SetLevel(QXErrorLevel::Quiet);
  QXThrow.SetStrict(false);
  std::string text(data, data + size);
  text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
  // The defaults of these would be looked for in the file system.
  if (text.find("file") != text.npos || text.find("Ext") != text.npos) return 0;

  QXInterface first, second;
  qxisstream in(text);
  const bool good = QXConfigure(first, in);
  REQUIRE(QXConfigure(second, text.c_str()) == good);
  const std::string written = Written(first);
  REQUIRE(Written(second) == written);
  REQUIRE(Written(QXInterface(first)) == written);

  qxosstream pages;
  REQUIRE(QXWriteJSON(first, pages) && QXWriteHtml(first, pages, "name", "1"));
  REQUIRE(QXWriteSettings(first, pages, /*all=*/true, "") &&
          WriteBriefHelpDescription(first, "name", pages, 2, 40));

  // A carriage return at the end of a line is taken for a part of the line end.
  if (!CanBeReadAgain(first) || written.find('\r') != written.npos) return 0;
  QXInterface again;
  REQUIRE(QXConfigure(again, written.c_str()));
  REQUIRE(Flat(Written(again)) == Flat(written));
  return 0;
}
