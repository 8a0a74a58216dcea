// The mark that exports a symbol from libqxplatform.
#pragma once

#define QXPLATFORM_API __attribute__((visibility("default")))
