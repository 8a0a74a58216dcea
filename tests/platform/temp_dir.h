// A directory for one test's files, gone with all its content at the end.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

class TempDir {
public:
  TempDir() : path_(testing::TempDir() + "qxXXXXXX") {
    if (::mkdtemp(path_.data()) == nullptr) ADD_FAILURE() << "no directory " << path_;
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() { std::filesystem::remove_all(path_); }

  std::string Path(const std::string& name) const { return path_ + "/" + name; }

  std::string Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Path(name);
  }

  std::string Fifo(const std::string& name) const {
    EXPECT_EQ(::mkfifo(Path(name).c_str(), 0600), 0);
    return Path(name);
  }

private:
  std::string path_;
};
