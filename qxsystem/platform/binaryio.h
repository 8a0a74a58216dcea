// Numbers and strings in binary form, in the byte order of this machine
// (little-endian): what is written here is read back here, bit for bit.
#pragma once

#include <cstddef>
#include <string>

#include <qxsystem/platform/export.h>

namespace QXPlatform {

class qxistream;
class qxostream;

/// Reads `count` elements of `size` bytes each into `element` and returns the
/// number of bytes moved, which is less than all where the stream ends. A block
/// too large for memory moves nothing.
QXPLATFORM_API std::size_t QX_io_read_binary(qxistream& in, unsigned char* element,
                                             std::size_t size, unsigned count);

/// Writes `count` elements of `size` bytes each and returns the number of bytes
/// that `out` accepted.
QXPLATFORM_API std::size_t QX_io_write_binary(qxostream& out, const unsigned char* element,
                                              std::size_t size, unsigned count);

/// The same from and to memory, which has to hold `size * count` bytes. No
/// pointer needs to be aligned.
QXPLATFORM_API std::size_t QX_io_read_binary(const unsigned char* source, unsigned char* element,
                                             std::size_t size, unsigned count);
QXPLATFORM_API std::size_t QX_io_write_binary(unsigned char* target, const unsigned char* element,
                                              std::size_t size, unsigned count);

/// Replaces `text` by the string that stands at `source`: its length in 32
/// bits, then its bytes. Returns the number of bytes used.
///
/// The length is believed, so this is for memory that was filled by the next
/// function and never for bytes from outside.
QXPLATFORM_API std::size_t QX_io_read_binary(const unsigned char* source, std::string& text);

/// Writes `text` in that form to `target`, which has to hold its size and four
/// more bytes. Returns the number of bytes written; 0, with nothing written,
/// for a text of 2^32 bytes or more.
QXPLATFORM_API std::size_t QX_io_write_binary(unsigned char* target, const std::string& text);

}  // namespace QXPlatform
