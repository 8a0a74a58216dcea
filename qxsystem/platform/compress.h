// Compression of a block of memory.
#pragma once

#include <cstddef>
#include <string>

#include <qxsystem/platform/export.h>

namespace QXPlatform {

/// Replaces `out` by the compressed form of the `size` bytes at `data`.
///
/// `method` is "gz", which makes a gzip stream (RFC 1952) without name and
/// time, or "zstd", which makes one Zstandard frame (RFC 8878) that tells its
/// content's size. Equal input gives equal output. Any other method: false,
/// with `out` as it was.
QXPLATFORM_API bool QXCompress(std::string& out, const char* data, std::size_t size,
                               const char* method);

}  // namespace QXPlatform
