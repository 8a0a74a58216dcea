// The mark that exports a symbol from libqxsystem.
#pragma once

#define QXSYSTEM_API __attribute__((visibility("default")))
