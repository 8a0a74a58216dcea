// Writers for nested text: they keep track of indentation and line ends, so that
// what prints an item need not know what stands before it.
#pragma once

#include <string>

#include <qxsystem/core/export.h>

namespace QXPlatform {
class qxostream;
}

namespace QXSystem {

/// A document in the making. Line ends are kept back until more text comes.
/// Operations answer true, unless told otherwise.
class QXSYSTEM_API QXWriter {
public:
  /// Begins the document with a line of text, whatever line ends are kept back.
  virtual bool Start(const std::string& text) = 0;

  /// Writes the line ends that were kept back.
  virtual bool End() = 0;

  /// Go one level deeper, and back. False, with a Warning, at level 0.
  virtual bool Indent() = 0;
  virtual bool EndIndent() = 0;

  virtual bool Bold() = 0;
  virtual bool EndBold() = 0;
  virtual bool Underline() = 0;
  virtual bool EndUnderline() = 0;

  /// Begin and end a list of items.
  virtual bool List() = 0;
  virtual bool EndList() = 0;

  /// Ends the line, before the next text.
  virtual bool NewLine() = 0;

  /// Writes a rule across the page.
  virtual bool Line() = 0;

  /// Write the name of something, as the place of its description or as a
  /// reference to that.
  virtual bool WriteAnchor(const std::string& name) = 0;
  virtual bool WriteLink(const std::string& name) = 0;

  /// Writes text, after the line ends that were kept back.
  virtual bool operator()(const std::string& text) = 0;

  virtual ~QXWriter() = default;

protected:
  QXWriter() = default;
  QXWriter(const QXWriter&) = default;
  QXWriter& operator=(const QXWriter&) = default;
};

/// A plain text. A line begins with four blanks for each level, whatever the
/// indent string, which `Indent` writes at once, at the end of the present line.
class QXSYSTEM_API QXTextWriter : public QXWriter {
public:
  /// `out` is borrowed for the life of the writer.
  QXTextWriter(QXPlatform::qxostream& out, const std::string& indent);

  bool Start(const std::string& text) override;
  bool End() override;
  bool Indent() override;
  bool EndIndent() override;
  bool Bold() override { return true; }
  bool EndBold() override { return true; }
  bool Underline() override { return true; }
  bool EndUnderline() override { return true; }
  bool List() override { return Indent(); }
  bool EndList() override { return EndIndent(); }
  bool NewLine() override;
  bool Line() override;
  bool WriteAnchor(const std::string& name) override { return (*this)(name); }
  bool WriteLink(const std::string& name) override { return (*this)(name); }
  bool operator()(const std::string& text) override;

private:
  QXPlatform::qxostream& out_;
  const std::string indent_;
  unsigned depth_ = 0;
  unsigned line_ends_ = 0;  // kept back
};

}  // namespace QXSystem
