#include <qxsystem/platform/file.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include <platform/temp_dir.h>

using namespace QXPlatform;

TEST(QXFile, KnowsExistenceAndSize) {
  const TempDir dir;
  const std::string large = dir.Write("large", "");
  ASSERT_EQ(::truncate(large.c_str(), 5l << 30), 0);
  const struct {
    std::string name;
    bool exists;
    long size;
  } cases[] = {{dir.Write("empty", ""), true, 0},
               {large, true, 5l << 30},
               {dir.Fifo("pipe"), true, -1},
               {dir.Path(""), false, -1},
               {"", false, -1}};
  for (const auto& c : cases) {
    EXPECT_EQ(QXFile(c.name).Exists(), c.exists) << c.name;
    EXPECT_EQ(QXFile(c.name).Size(), c.size) << c.name;
  }
}

TEST(QXFileDetermineName, RemovesDirectoriesAndNothingElse) {
  const std::string names[][2] = {{"a.tar.gz", "a.tar.gz"}, {"/x.y/a.b", "a.b"}, {"x.y/", ""}};
  for (const auto& [path, name] : names) EXPECT_EQ(QXFileDetermineName(path), name);
}
