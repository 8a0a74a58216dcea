// The release of this library, as constants of the build.
#pragma once

#include <qxsystem/core/export.h>
#include <qxsystem/platform/version.h>

namespace QXSystem {

/// The day of the release, in decimal yyyymmdd.
QXSYSTEM_API unsigned QXSystemGetVersion();

/// System and processor, such as "linux-x64".
QXSYSTEM_API const char* QXSystemGetArch();

/// System, compiler and processor.
QXSYSTEM_API const char* QXSystemGetPlatform();

/// The release, such as "3.3.0.1", of whatever kind this build is.
QXSYSTEM_API const char* QXSystemGetRelease();
QXSYSTEM_API const char* QXSystemGetNonDebugRelease();

/// The release as a debug build would name itself.
QXSYSTEM_API const char* QXSystemGetDebugRelease();

/// How the library was configured.
QXSYSTEM_API const char* QXSystemGetConfigureArgs();

/// The record that this library registers with the platform layer when it is
/// loaded.
QXSYSTEM_API QXPlatform::QXVersion QXSystemVersion();

}  // namespace QXSystem
