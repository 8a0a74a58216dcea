// The toolkits of an application and their releases.
#pragma once

#include <string>

#include <qxsystem/platform/export.h>

namespace QXPlatform {

class qxostream;

/// One toolkit's name and release.
struct QXVersion {
  std::string family;   ///< the family of toolkits, "qxtoolkit"
  std::string name;     ///< the toolkit's own name, "QXSystem"
  std::string release;  ///< such as "3.3.0.1"
};

/// Adds a toolkit to those that `QXGetVersions` prints. False, with nothing
/// added, for null and for a getter that is there already.
///
/// For static initialisers: it may be called before any other initialiser has
/// run, and from any thread.
QXPLATFORM_API bool QXRegisterVersion(QXVersion (*getter)());

/// Prints one line for each registered toolkit, in the order of registration:
/// family, name and release, with a blank between.
QXPLATFORM_API void QXGetVersions(qxostream& out);

}  // namespace QXPlatform
