// What the tests of the command-line system share.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <qxsystem/core/iter.h>

/// What a cursor yields, from where it stands.
template <class T>
std::vector<std::remove_const_t<T>> All(QXSystem::QXIterBase<T>* cursor) {
  std::vector<std::remove_const_t<T>> items;
  for (QXSystem::QXIter<T> item = cursor; item; ++item) items.push_back(*item);
  return items;
}

/// The names of what a cursor yields.
template <class T>
std::string Names(QXSystem::QXIterBase<T>* cursor) {
  std::string names;
  for (QXSystem::QXIter<T> item = cursor; item; ++item)
    names += (names.empty() ? "" : " ") + item->GetName();
  return names;
}
