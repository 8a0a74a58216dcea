// What the tests of the command-line system share, and the headers that most use.
#pragma once

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <qxsystem/core/errortest.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

using Texts = std::vector<std::string>;

/// What a cursor yields, from where it stands.
template <class T>
std::vector<std::remove_const_t<T>> All(QXSystem::QXIterBase<T>* cursor) {
  std::vector<std::remove_const_t<T>> items;
  for (QXSystem::QXIter<T> item = cursor; item; ++item) items.push_back(*item);
  return items;
}

inline std::string Join(const Texts& texts, const std::string& between) {
  std::string all;
  for (const std::string& text : texts) all += (&text == texts.data() ? "" : between) + text;
  return all;
}

/// The names of what a cursor yields.
template <class T>
std::string Names(QXSystem::QXIterBase<T>* cursor) {
  Texts names;
  for (QXSystem::QXIter<T> item = cursor; item; ++item) names.push_back(item->GetName());
  return Join(names, " ");
}

/// The values of all parameters that have some, "-n=3 -l=1;2", with a "?" behind
/// those that are not loaded.
inline std::string ValuesOf(const QXSystem::QXInterface& interface) {
  Texts all;
  for (QXSystem::QXIter<QXSystem::QXParameter> p = interface.GetParameters(true); p; ++p) {
    Texts values = All(p->GetStringValues());
    for (unsigned i = 0; i < values.size(); ++i) values[i] += p->GetHasValue(i) ? "" : "?";
    if (p->GetHasValue()) all.push_back(p->GetName() + "=" + Join(values, ";"));
  }
  return Join(all, " ");
}

/// Catches messages, and lets errors pass.
struct Messages : QXSystem::QXPushSimpleQXThrowTester {
  Messages() { QXSystem::QXThrow.SetStrict(false); }

  /// The messages, all of which must be at one level.
  std::string At(unsigned level) const {
    const std::string head = "level = " + std::to_string(level) + "\n", log = GetErrorLog();
    EXPECT_TRUE(log.empty() || log.compare(0, head.size(), head) == 0) << log;
    return log.substr(log.empty() ? 0 : head.size());
  }
};

/// A table of what is done, each on a line that begins with "$ ", and what comes
/// of it: on the lines below, or behind "->" on the same line, with " / " for the
/// ends of lines.
inline std::vector<std::pair<std::string, std::string>> Sessions(const std::string& text) {
  std::vector<std::pair<std::string, std::string>> sessions;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, 1, "$") != 0) {
      sessions.back().second += line + "\n";
      continue;
    }
    const std::size_t arrow = std::min(line.find(" ->"), line.size());
    const std::size_t begin = std::min<std::size_t>(2, arrow);
    std::string answer = line.substr(std::min(arrow + 4, line.size()));
    for (std::size_t at; (at = answer.find(" / ")) != answer.npos;) answer.replace(at, 3, "\n");
    if (arrow < line.size()) answer += "\n";
    sessions.emplace_back(line.substr(begin, arrow - begin), answer);
  }
  return sessions;
}

struct Outcome {
  bool good;
  std::string text = "";
};

/// Goes through a table. What comes of a line are the messages, all at `level` and
/// none if the outcome of `act(line)` is good, and its text, unless that is empty.
template <class Act>
void ExpectSessions(const std::string& table, unsigned level, const Act& act) {
  for (const auto& [line, answer] : Sessions(table)) {
    SCOPED_TRACE(line);
    const Messages messages;
    const Outcome outcome = act(line);
    const std::string told = messages.At(level);
    EXPECT_EQ(outcome.good, told.empty());
    EXPECT_EQ(told + outcome.text + (outcome.text.empty() ? "" : "\n"), answer);
  }
}

/// A text in which "/" stands for a line end.
inline std::string Lines(std::string text) {
  std::replace(text.begin(), text.end(), '/', '\n');
  return text;
}

/// A configuration text from parameters in a line each, "-key type; ALIAS -k; LIST
/// true", in which other lines stand as they are.
inline std::string Describe(const std::string& lines) {
  std::string text;
  std::istringstream in(lines);
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, 1, "-") != 0) {
      text += line + "\n";
      continue;
    }
    line.replace(line.find(' '), 1, "\n  !TYPE ");
    for (std::size_t at; (at = line.find("; ")) != line.npos;) line.replace(at, 2, "\n  !");
    text += "!PARAMETER " + line + "\n!END\n";
  }
  return text;
}

/// A line as a shell would split it. The one thing it quotes is the empty word, ''.
inline Texts Split(const std::string& line) {
  std::istringstream in(line);
  Texts words(std::istream_iterator<std::string>(in), {});
  std::replace(words.begin(), words.end(), std::string("''"), std::string());
  return words;
}
