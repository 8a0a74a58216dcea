// How a data file came to be: program, command line, settings and date, and the
// same of the files that it was made from.
//
//     QXHeader header(argc, argv, "dock", "1.2", "", itf, /*parent=*/&read);
//
// A header is generic data, so whatever stores a QXBase stores a header. A QXB
// handler needs functors for its type, and QXInstallGenericDataHandler<QXHeader>
// for the headers inside a header; what tags they have is up to the program.
#pragma once

#include <string>

#include <qxsystem/core/base.h>
#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>

namespace QXSystem {

class QXInterface;

/// A header. Its values are items with the names "program", "version",
/// "commandline", "itf", "comment", "day", "month", "year", "hour", "minutes",
/// "seconds", "qx_release", "qx_version", "platform", "history", and "0", "1" and
/// so on for earlier headers.
///
/// A getter answers with an empty text or 0 where the item is missing or, with a
/// warning, of another type. A setter replaces the item or makes it; one of
/// another type it leaves as it is, with a warning. References to texts are valid
/// until the header changes.
class QXSYSTEM_API QXHeader : public QXContainer {
public:
  /// Without items.
  QXHeader();

  /// All about a run of `program`: the arguments behind the first, joined by
  /// single blanks, the settings of `itf`, the present time, the release of this
  /// library, and, unless it is null, `parent` as history. No text may be null.
  /// Warns when `argc` is 0.
  QXHeader(int argc, char** argv, const char* program, const char* version, const char* comment,
           const QXInterface& itf, const QXHeader* parent);

  QXHeader(const QXHeader& other);
  QXHeader(QXHeader&& other) noexcept;
  QXHeader& operator=(const QXHeader& other);
  QXHeader& operator=(QXHeader&& other) noexcept;
  ~QXHeader() override;

  const void* GetDataType() const override;
  bool IsDataType(const void* id) const override;
  QXHeader* CreateCopy() const override;

  /// Whether there is any item.
  explicit operator bool() const;

  const std::string& GetProgram() const;
  const std::string& GetVersion() const;
  const std::string& GetCommandLine() const;
  const std::string& GetComment() const;
  const std::string& GetInterface() const;  ///< the settings, a parameter file
  const std::string& GetQXRelease() const;
  const std::string& GetPlatform() const;
  int GetQXVersion() const;

  /// The numbers as they are stored.
  void GetDate(int& day, int& month, int& year) const;
  void GetDate(int& day, int& month, int& year, int& hour, int& minutes, int& seconds) const;

  /// Copies of the earlier headers, the one that was added last first; the
  /// caller owns the cursor, which does not depend on this header. In the place
  /// of one that is missing there is an empty one. "history" comes from files: of
  /// a number that exceeds that of the items by more than 4096, only so many count.
  QXIterBase<QXHeader>* GetHistory() const;

  bool SetProgram(const std::string& program);
  bool SetVersion(const std::string& version);
  bool SetCommandLine(const std::string& line);
  bool SetComment(const std::string& comment);
  bool SetQXRelease(const std::string& release);
  bool SetPlatform(const std::string& platform);
  bool SetQXVersion(int version);

  /// Stores what QXWriteSettings writes, parameters that are not set included.
  bool SetInterface(const QXInterface& itf);

  /// Stores the numbers as they are; hour, minutes and seconds are 0 if they are
  /// not given.
  bool SetDate(int day, int month, int year, int hour, int minutes, int seconds);
  bool SetDate(int day, int month, int year);

  /// Stores the local time: the month counted from 1, and hour, minutes and
  /// seconds each one more than the clock shows, so that none is 0. False, with a
  /// warning and nothing changed, when the clock fails.
  bool SetDate();

  /// Adds what `other.GetHistory()` gives, in that order, and then `other`, which
  /// may be this very header, without those. Their order turns round that way:
  /// with files A, B, C and D, each made from the one before, that of D gives C, A
  /// and B. What is added of `other` keeps the number of its earlier headers:
  /// asked for its own history, it gives empty ones.
  bool AddHistory(const QXHeader& other);

private:
  unsigned CountHistory() const;
};

extern template class QXBaseDataT<QXHeader>;

}  // namespace QXSystem
