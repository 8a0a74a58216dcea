// Looking parameters of options up, for sources that ask about many.
#pragma once

#include <string>
#include <unordered_map>

#include <qxsystem/interface/options.h>

namespace QXSystem {

/// The parameters of a tree of options by name and alias, in any case of letters.
/// Names that change afterwards are not seen.
class OptionIndex {
public:
  explicit OptionIndex(const QXOptions& options);

  /// The first parameter of the tree that has this key, else null. Nothing has
  /// the empty key.
  QXParameter* Find(const std::string& key) const;

private:
  std::unordered_map<std::string, QXParameter*> parameters_;  // by key in lower case
};

}  // namespace QXSystem
