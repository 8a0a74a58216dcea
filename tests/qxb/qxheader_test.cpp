#include <qxsystem/qxb/qxheader.h>

#include <gtest/gtest.h>

#include <ctime>
#include <utility>

#include <qxsystem/core/version.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/platform/clock.h>

#include "support.h"

using namespace qxbtest;

namespace {

QXHeader Header(const std::string& program, const QXHeader* parent = nullptr) {
  static char* argv[] = {const_cast<char*>("./prog"), nullptr};
  return QXHeader(1, argv, program.c_str(), "", "", QXInterface(), parent);
}

// The programs of the history, a "-" for an empty header.
std::string History(const QXHeader& header) {
  std::string programs;
  for (QXIter<QXHeader> h = header.GetHistory(); h; ++h)
    programs += *h ? h->GetProgram() : std::string("-");
  return programs;
}

std::string ItemNames(const QXHeader& header) {
  std::string names;
  for (QXIter<QXBaseData> item = header.GetDataIter(); item; ++item)
    names += QXGetTag(item->GetTag()) + std::string(" ");
  return names;
}

TEST(QXHeader, TellsAllAboutARun) {
  char texts[] = "./prog\0-s\0a b\0";
  char* arguments[] = {texts, texts + 7, texts + 10, texts + 13};
  QXInterface itf;
  itf.AddParameter(QXIntParameter("-n", 5));
  std::tm before, after;
  const QXPushQXThrowHasNoMessages silent;
  ASSERT_TRUE(QXPlatform::QXCurrentTime(&before));
  const QXHeader header(4, arguments, "prog", "1.2", "comment", itf, nullptr);
  ASSERT_TRUE(QXPlatform::QXCurrentTime(&after));

  EXPECT_EQ(header.GetProgram() + header.GetVersion() + header.GetComment(), "prog1.2comment");
  EXPECT_EQ(header.GetCommandLine(), "-s a b ");  // the last one is empty
  EXPECT_EQ(header.GetInterface(), "#Interface settings\n#-n  5\n");
  EXPECT_EQ(header.GetQXRelease() + header.GetPlatform(),
            QXSystemGetRelease() + std::string(QXSystemGetPlatform()));
  EXPECT_EQ(header.GetQXVersion(), static_cast<int>(QXSystemGetVersion()));
  EXPECT_EQ(ItemNames(header),
            "program version commandline itf comment day month year hour minutes seconds "
            "qx_release qx_version platform ");

  // The clock, between the two readings of it; one is added to hour, minute, second.
  std::tm stored = {};
  header.GetDate(stored.tm_mday, stored.tm_mon, stored.tm_year, stored.tm_hour, stored.tm_min,
                 stored.tm_sec);
  for (int* field : {&stored.tm_mon, &stored.tm_hour, &stored.tm_min, &stored.tm_sec}) --*field;
  stored.tm_year -= 1900;
  stored.tm_isdst = before.tm_isdst;
  EXPECT_GE(std::mktime(&stored), std::mktime(&before));
  EXPECT_LE(std::mktime(&stored), std::mktime(&after));
}

TEST(QXHeader, WarnsOfNoArgumentsAndOfForeignItems) {
  QXPushSimpleQXThrowTester messages;
  QXHeader header(0, nullptr, "p", "v", "c", QXInterface(), nullptr);
  EXPECT_EQ(messages.GetErrorLog(),
            "level = 4\nWarning: no command line arguments in QXHeader construction.\n");
  EXPECT_EQ(header.GetCommandLine() + History(header), "");
  QXBaseDataT<int> foreign(QXGetTag("program"), 5);
  header.SetBaseData(&foreign);
  EXPECT_FALSE(header.SetProgram("q"));
  EXPECT_EQ(header.GetProgram(), "");
  EXPECT_EQ(messages.NumMessagesAtLevel(QXErrorLevel::Warning), 3u);
}

TEST(QXHeader, KeepsGivenDatesAndIsFalseWhenEmpty) {
  QXHeader header;
  EXPECT_FALSE(header);
  int day = 9, month = 9, year = 9, hour = 9, minutes = 9, seconds = 9;
  header.GetDate(day, month, year);
  EXPECT_EQ(day + month + year, 0);
  EXPECT_TRUE(header.SetDate(1, 2, 2003) && header);
  header.GetDate(day, month, year, hour, minutes, seconds);
  EXPECT_EQ(day * 100 + month * 10 + year + hour + minutes + seconds, 2123);
  EXPECT_EQ(ItemNames(header), "day month year hour minutes seconds ");
  EXPECT_TRUE(QXHeader(header).IsDataType(QXGetDataType<QXContainer>()));
}

TEST(QXHeader, FlattensTheHistoryOfItsParent) {
  const QXHeader a = Header("A"), b = Header("B", &a), c = Header("C", &b), d = Header("D", &c);
  EXPECT_FALSE(a.HasData("history"));
  EXPECT_EQ(History(b), "A");
  EXPECT_EQ(History(c), "BA");
  EXPECT_EQ(History(d), "CAB");
  EXPECT_EQ(d.GetData<int>("history"), 3);
  const auto& parent = d.GetData<QXHeader>("2");
  EXPECT_EQ(ItemNames(parent), ItemNames(a) + "history ");
  EXPECT_EQ(History(parent), "--");

  QXHeader grown = d;
  QXIter<QXHeader> kept = grown.GetHistory();
  grown.AddHistory(grown);
  EXPECT_EQ(History(grown), "DBACCAB");
  grown.AddHistory(grown.GetData<QXHeader>("0"));
  EXPECT_EQ(History(grown), "B-DBACCAB");  // behind what is left of B's own history
  grown.Clear();
  EXPECT_EQ(kept->GetProgram(), "C");  // of copies

  // Items of other types under numbers give way, names that only look like them stay.
  grown.SetData<int>("0", 5);
  grown.AddHistory(a);
  EXPECT_EQ(History(grown), "A");
  grown.SetData<int>("01", 5);
  EXPECT_EQ(Header("B", &grown).GetData<QXHeader>("1").GetData<int>("01"), 5);
}

// Counts that the items do not bear out, from history to history, or from damage.
TEST(QXHeader, PutsEmptyHeadersWhereSomeAreMissing) {
  const std::pair<int, unsigned> cases[] = {
      {-1, 0}, {-2147483647 - 1, 0}, {40, 40}, {2147483647, 15 + 4096}};
  for (const auto& [count, headers] : cases) {
    SCOPED_TRACE(count);
    QXHeader header = Header("H"), child;
    header.SetData<int>("history", count);
    EXPECT_EQ(History(header), std::string(headers, '-'));
    EXPECT_FALSE(QXHasTag("5000"));
    child.AddHistory(header);
    EXPECT_EQ(child.GetData<int>("history"), static_cast<int>(headers + 1));
  }
  QXHeader sparse;
  sparse.SetData<int>("history", 6);
  sparse.SetData("5", Header("F"));
  EXPECT_EQ(History(sparse), "F-----");
}

}  // namespace
