#include <qxsystem/qxb/qxbitem_private.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

#include <qxsystem/platform/halffloat.h>
#include <qxsystem/qxb/qxb_private.h>

namespace QXSystem {
namespace {

using QXPlatform::QXHalfFloat;

// Which byte-order mark speaks for an element type.
enum class Family { None, Int, Float, Short };

template <class E>
constexpr Family familyOf = std::is_floating_point_v<E> ? Family::Float
                            : sizeof(E) == 1            ? Family::None
                            : sizeof(E) == 2            ? Family::Short
                                                        : Family::Int;

template <class E>
constexpr Shape shapeOf = familyOf<E> == Family::Short ? Shape::Marked : Shape::Counted;

template <class E>
bool SwapDue(const BlockReader& block) {
  if constexpr (familyOf<E> == Family::Int) return block.swapInt;
  if constexpr (familyOf<E> == Family::Float) return block.swapFloat;
  return false;
}

template <class E>
void Swap(E* elements, std::size_t count) {
  using Word = std::conditional_t<sizeof(E) == 2, std::uint16_t,
                                  std::conditional_t<sizeof(E) == 4, std::uint32_t, std::uint64_t>>;
  for (std::size_t i = 0; i < count; ++i) {
    Word word;
    std::memcpy(&word, elements + i, sizeof word);
    if constexpr (sizeof(E) == 2) word = __builtin_bswap16(word);
    if constexpr (sizeof(E) == 4) word = __builtin_bswap32(word);
    if constexpr (sizeof(E) == 8) word = __builtin_bswap64(word);
    std::memcpy(static_cast<void*>(elements + i), &word, sizeof word);
  }
}

// Fills `count` elements from their stored bytes, which may stand at any
// address. Any byte but 0 is a true bool, so bools are not copied as they are.
template <class E>
void Load(E* elements, const unsigned char* bytes, std::size_t count, bool swap) {
  if constexpr (std::is_same_v<E, bool>) {
    for (std::size_t i = 0; i < count; ++i) elements[i] = bytes[i] != 0;
  } else {
    if (count != 0) std::memcpy(static_cast<void*>(elements), bytes, count * sizeof(E));
    if constexpr (sizeof(E) > 1)
      if (swap) Swap(elements, count);
  }
}

// Reads what stands in front of an element type's bytes, mark and length, and
// takes the bytes off the block. Null when the block has fewer.
template <class E>
const unsigned char* TakeCounted(BlockReader& block, std::size_t& size, bool& swap) {
  swap = SwapDue<E>(block);
  if constexpr (shapeOf<E> == Shape::Marked) {
    const int mark = block.in.get();
    if (mark < 0) return nullptr;
    swap = QXBShortEndian(static_cast<unsigned>(mark));
  }
  if (!ReadLength(block.in, QXBMaxLength, size)) return nullptr;
  return block.in.take(size);
}

template <class T>
const T& ValueOf(const QXBaseData& item) {
  return static_cast<const QXBaseDataT<T>&>(item).GetValue();
}

// The shapes. Each names its value type and reads and shows a value of it.

template <class T>
struct Number {
  using Value = T;
  static constexpr Shape shape = Shape::Plain;

  static unsigned Read(BlockReader& block) {
    const unsigned char* bytes = block.in.take(sizeof(T));
    if (!bytes) return QXBReturn::IncorrectSize;
    T value;
    Load(&value, bytes, 1, SwapDue<T>(block));
    block.Add(value);
    return QXBReturn::Success;
  }

  static ValueBytes Bytes(const QXBaseData& item) { return {&ValueOf<T>(item), sizeof(T)}; }
};

struct Text {
  using Value = std::string;
  static constexpr Shape shape = Shape::Counted;

  static unsigned Read(BlockReader& block) {
    std::size_t size;
    bool swap;
    const unsigned char* bytes = TakeCounted<char>(block, size, swap);
    if (!bytes) return QXBReturn::IncorrectSize;
    block.Add(std::string(reinterpret_cast<const char*>(bytes), size));
    return QXBReturn::Success;
  }

  static ValueBytes Bytes(const QXBaseData& item) {
    const std::string& text = ValueOf<std::string>(item);
    return {text.data(), text.size()};
  }
};

// A length that is no multiple of the element size loses its remainder. No
// elements at all is damage, save for bools.
template <class E>
struct Array {
  using Value = E*;
  static constexpr Shape shape = shapeOf<E>;

  static unsigned Read(BlockReader& block) {
    std::size_t size;
    bool swap;
    const unsigned char* bytes = TakeCounted<E>(block, size, swap);
    if (!bytes || (size == 0 && !std::is_same_v<E, bool>)) return QXBReturn::IncorrectSize;
    const std::size_t count = size / sizeof(E);
    std::unique_ptr<E[]> array(new E[count]);
    Load(array.get(), bytes, count, swap);
    block.object.AddBaseData(std::make_unique<QXBaseDataTPtr<E*>>(
        TagOfName(block.name), std::move(array), static_cast<unsigned>(count)));
    return QXBReturn::Success;
  }

  // A mere pointer counts as one element, unless it is null.
  static ValueBytes Bytes(const QXBaseData& item) {
    E* array = ValueOf<E*>(item);
    return {array, array ? item.GetSize() * sizeof(E) : 0};
  }
};

template <class E>
struct Vector {
  using Value = std::vector<E>;
  static constexpr Shape shape = std::is_same_v<E, bool> ? Shape::Bits : shapeOf<E>;

  static unsigned Read(BlockReader& block) {
    std::size_t size;
    bool swap;
    const unsigned char* bytes = TakeCounted<E>(block, size, swap);
    if (!bytes || size % sizeof(E) != 0) return QXBReturn::IncorrectSize;
    std::vector<E> values(size / sizeof(E));
    if constexpr (std::is_same_v<E, bool>) {
      for (std::size_t i = 0; i < size; ++i) values[i] = bytes[i] != 0;
    } else {
      Load(values.data(), bytes, values.size(), swap);
    }
    block.Add(std::move(values));
    return QXBReturn::Success;
  }

  static ValueBytes Bytes(const QXBaseData& item) {
    const std::vector<E>& values = ValueOf<std::vector<E>>(item);
    if constexpr (std::is_same_v<E, bool>)
      return {&values, values.size()};
    else
      return {values.data(), values.size() * sizeof(E)};
  }
};

template <class S>
Codec Row(unsigned char code) {
  return {code, S::shape, QXGetDataType<typename S::Value>(), &S::Read, &S::Bytes};
}

constexpr std::size_t Codes = 23;

const std::array<Codec, Codes>& Codecs() {
  static const std::array<Codec, Codes> table = {Row<Number<bool>>(2),
                                                 Row<Number<int>>(1),
                                                 Row<Number<float>>(4),
                                                 Row<Number<double>>(8),
                                                 Row<Text>(16),
                                                 Row<Array<int>>(32),
                                                 Row<Array<unsigned>>(64),
                                                 Row<Array<bool>>(3),
                                                 Row<Array<float>>(5),
                                                 Row<Array<double>>(17),
                                                 Row<Array<QXHalfFloat>>(18),
                                                 Row<Array<char>>(6),
                                                 Row<Array<unsigned char>>(7),
                                                 Row<Vector<bool>>(80),
                                                 Row<Vector<char>>(81),
                                                 Row<Vector<unsigned char>>(82),
                                                 Row<Vector<short>>(83),
                                                 Row<Vector<unsigned short>>(84),
                                                 Row<Vector<int>>(85),
                                                 Row<Vector<unsigned>>(86),
                                                 Row<Vector<float>>(87),
                                                 Row<Vector<double>>(88),
                                                 Row<Vector<QXHalfFloat>>(97)};
  return table;
}

}  // namespace

// Identities are hashes, so a few of their bits are a good place to look first.
const Codec* FindCodec(const void* type) {
  constexpr std::size_t places = 64;
  const auto place = [](const void* id) { return reinterpret_cast<std::uintptr_t>(id) % places; };
  static const auto byType = [place] {
    std::array<const Codec*, places> rows{};
    for (const Codec& codec : Codecs()) {
      std::size_t at = place(codec.type);
      while (rows[at]) at = (at + 1) % places;
      rows[at] = &codec;
    }
    return rows;
  }();
  std::size_t at = place(type);
  while (byType[at] && byType[at]->type != type) at = (at + 1) % places;
  return byType[at];
}

const Codec* FindCodec(unsigned char code) {
  static const auto byCode = [] {
    std::array<const Codec*, 256> rows{};
    for (const Codec& codec : Codecs()) rows[codec.code] = &codec;
    return rows;
  }();
  return byCode[code];
}

}  // namespace QXSystem
