#include <qxsystem/platform/file.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <tuple>

#include <platform/temp_dir.h>

using namespace QXPlatform;

TEST(QXFile, KnowsExistenceAndSize) {
  const TempDir dir;
  const std::string large = dir.Write("large", "");
  ASSERT_EQ(::truncate(large.c_str(), 5l << 30), 0);
  const std::tuple<std::string, bool, long> cases[] = {{dir.Write("empty", ""), true, 0},
                                                       {large, true, 5l << 30},
                                                       {dir.Fifo("pipe"), true, -1},
                                                       {dir.Path(""), false, -1},
                                                       {"", false, -1}};
  for (const auto& [name, exists, size] : cases) {
    EXPECT_EQ(QXFile(name).Exists(), exists) << name;
    EXPECT_EQ(QXFile(name).Size(), size) << name;
  }
}

TEST(QXFileDetermineName, RemovesDirectoriesAndNothingElse) {
  const std::string names[][2] = {{"a.tar.gz", "a.tar.gz"}, {"/x.y/a.b", "a.b"}, {"x.y/", ""}};
  for (const auto& [path, name] : names) EXPECT_EQ(QXFileDetermineName(path), name);
}
