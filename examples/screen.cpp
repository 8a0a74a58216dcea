// Finds, among the fingerprints of an FPS file, those most alike to one of them
// or to one of another file.
//
//   screen library.fps -id ZINC71786107
//   screen -in library.fps -query query.fps -counts
//
// FPS text has a fingerprint on each line: two hexadecimal digits for a byte, then
// a tab and an identifier. Lines with "#" stand in front, one of them perhaps
// "#num_bits=" and the number of bits.

#include <algorithm>
#include <string>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/bitvector.h>
#include <qxsystem/util/progressstream.h>
#include <qxsystem/util/qxstring.h>

#include "program.h"

using namespace QXPlatform;
using namespace QXSystem;

namespace {

constexpr const char* kInterface = R"(
!BRIEF finds the fingerprints that are most alike to a query
!PARAMETER -in 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF The fingerprints to search, an FPS file
!END
!PARAMETER -id 2
  !TYPE string
  !KEYLESS 2
  !SIMPLE true
  !BRIEF The identifier of the query
!END
!PARAMETER -query 3
  !TYPE string
  !SIMPLE true
  !BRIEF An FPS file with the query, if it is not in -in; without -id its first fingerprint
!END
!PARAMETER -max 4
  !TYPE int
  !DEFAULT 10
  !LEGAL_RANGE 1 inf
  !BRIEF Print so many hits at most
!END
!PARAMETER -min 5
  !TYPE double
  !DEFAULT 0
  !LEGAL_RANGE 0 1
  !BRIEF The lowest Tanimoto similarity of a hit
!END
!PARAMETER -counts 6
  !TYPE bool
  !DEFAULT false
  !BRIEF Print how many bits are set in the query alone, the hit alone, both and neither
!END
!PARAMETER -status 7
  !TYPE string
  !BRIEF Keep a file that tells how far the program is
!END
)";

constexpr const char* kRequirements = R"(
!REQUIREMENT
  !OPTION -id
  !OPTION -query
!ERROR_MSG
  Give the query, with -id or -query or both.
!END
)";

struct Fingerprint {
  std::string id;
  QXBitVector bits;
};

// Two digits for a byte, the higher half first: the text form of a bit vector
// has the lower one first, and a letter at its end.
bool ParseBytes(std::string digits, QXBitVector& bits) {
  if (digits.size() % 2 != 0) return false;
  for (std::size_t i = 0; i < digits.size(); i += 2) std::swap(digits[i], digits[i + 1]);
  // What is no digit makes it shorter.
  return bits.FromHexString(digits + "J") && bits.GetSize() == 4 * digits.size();
}

std::vector<Fingerprint> ReadFps(const std::string& name, QXTracerBase& tracer) {
  tracer.Push("Reading " + name);
  qxprogressstream in(new qxifstream(name), /*ownStream=*/true, &tracer, /*ownTracer=*/false);
  if (!in) Fail(name + ": cannot be read");
  const std::string bitsKey = "#num_bits=";
  std::vector<Fingerprint> fingerprints;
  unsigned size = 0;  // 0: not known yet
  std::string line;
  for (unsigned number = 1; in.getline(line); ++number) {
    const std::string where = name + ": line " + std::to_string(number) + ": ";
    if (line.compare(0, bitsKey.size(), bitsKey) == 0) {
      if (!QXStringToNumber(line.substr(bitsKey.size()), size) || size == 0)
        Fail(where + "no number of bits");
    }
    if (line.empty() || line[0] == '#') continue;

    std::vector<std::string> words;
    QXStringTokenize(words, line, "\t", /*skipEmpty=*/false);
    Fingerprint fingerprint;
    if (words.size() < 2 || !ParseBytes(words[0], fingerprint.bits))
      Fail(where + "no bytes in hexadecimal digits and an identifier");
    fingerprint.id = words[1];
    QXBitVector& bits = fingerprint.bits;
    if (size == 0) size = bits.GetSize();
    const unsigned last = bits.LastBit();
    if (bits.GetSize() != (size - 1) / 8 * 8 + 8 || (last != QXBitVector::None && last >= size))
      Fail(where + "not a fingerprint of " + std::to_string(size) + " bits");
    bits.SetSize(size);
    fingerprints.push_back(std::move(fingerprint));
  }
  tracer.Pop();
  if (fingerprints.empty()) Fail(name + ": no fingerprints");
  return fingerprints;
}

// The fingerprint with this identifier, or the first if there is none.
const Fingerprint& Find(const std::vector<Fingerprint>& fingerprints, const std::string& id,
                        const std::string& name) {
  if (id.empty()) return fingerprints.front();
  for (const Fingerprint& fingerprint : fingerprints)
    if (fingerprint.id == id) return fingerprint;
  Fail(name + ": no fingerprint " + id);
}

}  // namespace

int main(int argc, char** argv) {
  QXInterface itf(kInterface);
  // Ends the program itself when something is wrong, or help was asked for.
  if (!QXParseCommandLine(itf, argc, argv, reinterpret_cast<const unsigned char*>(kRequirements),
                          QXErrorLevel::Error, /*checkHelp=*/true))
    return 1;

  const auto inName = Setting<std::string>(itf, "-in"), id = Setting<std::string>(itf, "-id"),
             queryName = Setting<std::string>(itf, "-query");
  Progress progress(Setting<std::string>(itf, "-status"));
  const auto fingerprints = ReadFps(inName, progress);
  const auto others = queryName.empty() ? std::vector<Fingerprint>() : ReadFps(queryName, progress);
  const QXBitVector& query =
      (queryName.empty() ? Find(fingerprints, id, inName) : Find(others, id, queryName)).bits;
  if (query.GetSize() != fingerprints[0].bits.GetSize())
    Fail(queryName + ": fingerprints of another size than in " + inName);

  struct Hit {
    double similarity;
    const Fingerprint* fingerprint;
  };
  std::vector<Hit> hits;
  const auto min = Setting<double>(itf, "-min");
  for (const Fingerprint& fingerprint : fingerprints) {
    const double similarity = QXTanimoto(query, fingerprint.bits);
    if (similarity >= min) hits.push_back({similarity, &fingerprint});
  }
  std::stable_sort(hits.begin(), hits.end(),
                   [](const Hit& a, const Hit& b) { return a.similarity > b.similarity; });
  hits.resize(std::min(hits.size(), static_cast<std::size_t>(Setting<int>(itf, "-max"))));

  const bool counts = Setting<bool>(itf, "-counts");
  if (counts) qxout << "similar   query     hit    both neither  identifier\n";
  for (const Hit& hit : hits) {
    std::string line = QXMakeString("%7.4f ", hit.similarity);
    if (counts) {
      unsigned onlyQuery, onlyHit, both, neither;
      QXGetBitCounts(query, hit.fingerprint->bits, &onlyQuery, &onlyHit, &both, &neither);
      line += QXMakeString("%7u %7u %7u %7u ", onlyQuery, onlyHit, both, neither);
    }
    qxout << line << " " << hit.fingerprint->id << "\n";
  }
}
