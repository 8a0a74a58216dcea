// Protobuf messages as a format of the benchmarks.
#pragma once

#include <google/protobuf/io/coded_stream.h>

#include <cstddef>
#include <cstdint>
#include <vector>

// Each message behind its length, as is usual for streams of them.
template <class Message>
class Protobuf {
public:
  using Object = Message;

  void StartWriting() { used = 0; }
  void Write(const Object& object) {
    const std::size_t size = object.ByteSizeLong();
    if (room.size() - used < size + 5) room.resize(2 * room.size() + size + 5);
    std::uint8_t* at = google::protobuf::io::CodedOutputStream::WriteVarint32ToArray(
        static_cast<std::uint32_t>(size), room.data() + used);
    used = static_cast<std::size_t>(object.SerializeWithCachedSizesToArray(at) - room.data());
  }
  std::size_t Size() const { return used; }

  void StartReading() { offset = 0; }
  void Read(Object& object) {
    google::protobuf::io::CodedInputStream head(room.data() + offset,
                                                static_cast<int>(used - offset));
    std::uint32_t size = 0;
    head.ReadVarint32(&size);
    offset += static_cast<std::size_t>(head.CurrentPosition());
    object.ParseFromArray(room.data() + offset, static_cast<int>(size));
    offset += size;
  }

private:
  std::vector<std::uint8_t> room;
  std::size_t used = 0;
  std::size_t offset = 0;
};
