#include <qxsystem/interface/writer.h>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/ostream.h>

namespace QXSystem {

QXTextWriter::QXTextWriter(QXPlatform::qxostream& out, const std::string& indent)
    : out_(out), indent_(indent) {}

bool QXTextWriter::Start(const std::string& text) {
  out_ << text << "\n";
  return true;
}

bool QXTextWriter::End() {
  for (; line_ends_ > 0; --line_ends_) out_ << "\n";
  return true;
}

bool QXTextWriter::Indent() {
  out_ << indent_;
  ++depth_;
  return true;
}

bool QXTextWriter::EndIndent() {
  if (depth_ == 0) {
    QXThrow.Warning("Too Many EndIndents");
    return false;
  }
  --depth_;
  return true;
}

bool QXTextWriter::NewLine() {
  ++line_ends_;
  return true;
}

bool QXTextWriter::Line() {
  constexpr std::size_t width = 80;
  const std::size_t indented = depth_ * indent_.size();
  return (*this)(std::string(indented < width ? width - indented : 0, '-')) && NewLine();
}

bool QXTextWriter::operator()(const std::string& text) {
  for (; line_ends_ > 0; --line_ends_) out_ << "\n" << std::string(4 * std::size_t{depth_}, ' ');
  out_ << text;
  return true;
}

}  // namespace QXSystem
