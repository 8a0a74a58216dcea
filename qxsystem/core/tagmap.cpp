#include <qxsystem/core/tagmap.h>

#include <sys/auxv.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <qxsystem/core/tagmap_private.h>

namespace QXSystem {
namespace {

constexpr unsigned SlotsPerBlock = 0x8000;
constexpr unsigned NumBlocks = 0x8000;
constexpr unsigned FirstNewId = 1024;
constexpr unsigned BondStereoId = 55;

using Block = std::array<std::string, SlotsPerBlock>;

std::atomic<Block*> blocks[NumBlocks];

std::uint64_t Load8(const char* p) {
  std::uint64_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

std::uint64_t Load4(const char* p) {
  std::uint32_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

// The first and the last bytes of a text as two words: up to 16 bytes, they
// and the length tell every text apart.
struct Ends {
  std::uint64_t first, last;

  Ends(const char* p, std::size_t n) : first(0), last(0) {
    const auto byte = [p](std::size_t at) {
      return std::uint64_t{static_cast<unsigned char>(p[at])};
    };
    if (n >= 8) {
      first = Load8(p);
      last = Load8(p + n - 8);
    } else if (n >= 4) {
      first = Load4(p);
      last = Load4(p + n - 4);
    } else if (n > 0) {
      first = byte(0) << 16 | byte(n / 2) << 8 | byte(n - 1);
    }
  }

  bool operator==(const Ends& other) const {
    return ((first ^ other.first) | (last ^ other.last)) == 0;
  }
};

// Names are short: a call of memcmp would take longer than the comparison.
bool SameText(const char* a, const char* b, std::size_t n) {
  if (n <= 16) return Ends(a, n) == Ends(b, n);
  if (n <= 32) return Ends(a, 16) == Ends(b, 16) && Ends(a + n - 16, 16) == Ends(b + n - 16, 16);
  return std::memcmp(a, b, n) == 0;
}

std::uint64_t Mix(std::uint64_t a, std::uint64_t b) {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

// What the hash of names starts from. It differs from process to process, so
// that nobody can write a file whose names all share one hash.
struct Secret {
  std::uint64_t a = 0, b = 0;

  static Secret OfThisProcess() {
    // Sixteen random bytes that the kernel gives each process.
    const auto* random = reinterpret_cast<const char*>(getauxval(AT_RANDOM));
    if (random == nullptr) return {};
    return {Mix(Load8(random) ^ 0x9e3779b97f4a7c15, 0xbf58476d1ce4e5b9),
            Mix(Load8(random + 8) ^ 0x94d049bb133111eb, 0xd6e8feb86659fd93)};
  }
};

std::uint32_t Hash(const Secret& secret, std::string_view name) {
  std::uint64_t a = secret.a ^ name.size();
  const char* p = name.data();
  std::size_t left = name.size();
  for (; left > 16; p += 16, left -= 16) a = Mix(Load8(p) ^ a, Load8(p + 8) ^ secret.b);
  // Of a long name, the last 16 bytes, some of them for the second time.
  const Ends rest = name.size() > 16 ? Ends(p + left - 16, 16) : Ends(p, left);
  return static_cast<std::uint32_t>(Mix(rest.first ^ a, rest.last ^ secret.b));
}

// From names to ids: open addressing with linear probing, never full. An entry
// holds a name's hash above its id and is 0 while free, for the id 0, that of
// the empty name, never enters.
//
// Readers search while one writer adds. An index that grew keeps its forerunner,
// which a reader may still be searching; all of them together are no larger than
// the present one.
struct Index {
  explicit Index(const Index* forerunner)
      : size(forerunner ? 2 * forerunner->size : FirstSize),
        secret(forerunner ? forerunner->secret : Secret::OfThisProcess()),
        entries(new std::atomic<std::uint64_t>[size]()),
        older(forerunner) {
    for (std::size_t i = 0; older && i < older->size; ++i) {
      const std::uint64_t entry = older->entries[i].load(std::memory_order_relaxed);
      if (entry != 0) Add(entry >> 32, static_cast<unsigned>(entry));
    }
  }

  std::size_t Place(std::uint64_t hash) const { return hash & (size - 1); }

  void Add(std::uint64_t hash, unsigned id) {
    std::size_t at = Place(hash);
    while (entries[at].load(std::memory_order_relaxed) != 0) at = Place(at + 1);
    entries[at].store(hash << 32 | id, std::memory_order_release);
  }

  static constexpr std::size_t FirstSize = 4096;

  const std::size_t size;  // a power of two
  const Secret secret;
  const std::unique_ptr<std::atomic<std::uint64_t>[]> entries;
  const Index* const older;  // not freed, but reachable
};

// What a search found: the id, 0 for none, and the hash of the name, which
// stays the same while the process lives.
struct Found {
  unsigned id;
  std::uint32_t hash;
};

// The strings lie in blocks that never move, so that ids are turned into names
// without a lock. Constant-initialised and without a destructor, the table
// serves the first static constructor of the process as well as the last
// destructor, and threads that run on during `exit`.
class TagBiMap {
public:
  Found Find(std::string_view name) {
    const Index* in = index.load(std::memory_order_acquire);
    if (in == nullptr) in = Begin();
    const std::uint32_t hash = Hash(in->secret, name);
    return {Find(*in, hash, name), hash};
  }

  // The id of `name`, which a search did not find just now. The string is
  // moved from unless another thread was quicker.
  unsigned Intern(std::uint32_t hash, std::string&& name) {
    if (name.empty()) return 0;
    const std::lock_guard<std::mutex> lock(mutex);
    Index* in = index.load(std::memory_order_relaxed);
    if (const unsigned known = Find(*in, hash, name)) return known;

    unsigned id = next.load(std::memory_order_relaxed);
    if ((id & 0xffff) == SlotsPerBlock) id = ((id >> 16) + 1) << 16;
    if (id >> 16 == NumBlocks) throw std::length_error("QXGetTag: all tag ids are used up");

    // What may fail comes first. A grown index is shown only when it is
    // complete, or a reader could miss a name that it has seen before.
    if (blocks[id >> 16].load(std::memory_order_relaxed) == nullptr)
      blocks[id >> 16].store(new Block, std::memory_order_release);
    if (numNames == in->size / 2) in = new Index(in);
    Name(id) = std::move(name);
    next.store(id + 1, std::memory_order_release);  // before anybody can find the id
    in->Add(hash, id);
    ++numNames;
    index.store(in, std::memory_order_release);
    return id;
  }

  std::string_view Text(unsigned id) {
    if (!Has(id) || (id & 0xffff) >= SlotsPerBlock) return "";
    if (blocks[0].load(std::memory_order_acquire) == nullptr) Begin();
    return Name(id);
  }

  bool Has(unsigned id) const { return id < next.load(std::memory_order_acquire); }

private:
  // The first touch makes the first block, with the one name known beforehand.
  Index* Begin() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (Index* in = index.load(std::memory_order_relaxed)) return in;
    auto block = std::make_unique<Block>();
    auto* in = new Index(nullptr);
    const std::string& name = (*block)[BondStereoId] = "QXBondStereo";
    in->Add(Hash(in->secret, name), BondStereoId);
    numNames = 1;
    blocks[0].store(block.release(), std::memory_order_release);
    index.store(in, std::memory_order_release);
    return in;
  }

  static unsigned Find(const Index& in, std::uint32_t hash, std::string_view name) {
    for (std::size_t at = in.Place(hash);; at = in.Place(at + 1)) {
      const std::uint64_t entry = in.entries[at].load(std::memory_order_acquire);
      if (entry == 0) return 0;
      if (entry >> 32 != hash) continue;
      const unsigned id = static_cast<unsigned>(entry);
      const std::string& known = Name(id);
      if (known.size() == name.size() && SameText(known.data(), name.data(), name.size()))
        return id;
    }
  }

  // Whoever has an id in use got it after its block and string were in place.
  static std::string& Name(unsigned id) {
    return (*blocks[id >> 16].load(std::memory_order_relaxed))[id & 0xffff];
  }

  std::atomic<Index*> index{nullptr};
  std::atomic<unsigned> next{FirstNewId};  // the id that the next new name gets
  std::size_t numNames = 0;                // in the index
  std::mutex mutex;                        // guards all changes
};

TagBiMap s_tags;

}  // namespace

unsigned QXGetTag(const char* name) {
  if (name == nullptr) return 0;
  const std::string_view text(name);
  const Found found = s_tags.Find(text);
  return found.id != 0 ? found.id : s_tags.Intern(found.hash, std::string(text));
}

unsigned QXGetTag(const std::string& name) {
  const Found found = s_tags.Find(name);
  return found.id != 0 ? found.id : s_tags.Intern(found.hash, std::string(name));
}

unsigned QXGetTag(std::string&& name) {
  const Found found = s_tags.Find(name);
  return found.id != 0 ? found.id : s_tags.Intern(found.hash, std::move(name));
}

const char* QXGetTag(unsigned id) {
  return s_tags.Text(id).data();
}

unsigned TagOfName(std::string_view name) {
  const Found found = s_tags.Find(name);
  return found.id != 0 ? found.id : s_tags.Intern(found.hash, std::string(name));
}

std::string_view NameOfTag(unsigned id) {
  return s_tags.Text(id);
}

bool QXHasTag(unsigned id) {
  return s_tags.Has(id);
}

bool QXHasTag(const char* name) {
  return name == nullptr || *name == '\0' || s_tags.Find(name).id != 0;
}

bool QXHasTag(const std::string& name) {
  return name.empty() || s_tags.Find(name).id != 0;
}

}  // namespace QXSystem
