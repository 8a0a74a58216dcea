#include <qxsystem/util/dottracer.h>

#include <qxsystem/util/progress_private.h>

namespace QXSystem {

using QXPlatform::qxendl;
using QXPlatform::qxostream;

class QXDotTracerImpl : public QXTracerBase {
public:
  QXDotTracerImpl(float interval, qxostream& out) : clock_(interval), out_(&out) {}

  QXDotTracerImpl(const std::string& title, float interval, qxostream& out)
      : clock_(interval), column_(title.size()), out_(&out) {
    out << title;
    out.flush();
  }

  ~QXDotTracerImpl() override {
    constexpr std::size_t roomForDone = 74;
    if (column_ > roomForDone) *out_ << qxendl;
    *out_ << "Done." << qxendl;
  }

  QXDotTracerImpl(const QXDotTracerImpl&) = delete;
  QXDotTracerImpl& operator=(const QXDotTracerImpl&) = delete;

  void SetTask(std::string) override {}
  void Push(std::string) override { PrintDot(); }
  void Pop() override { PrintDot(); }
  void Refresh() override {}
  void SetProgress(unsigned, unsigned) override { PrintDot(); }
  void SetProgress(double) override { PrintDot(); }
  bool Aborted() override {
    PrintDot();
    return false;
  }

private:
  void PrintDot() {
    constexpr std::size_t lastColumn = 79;
    if (!clock_.IsDue()) return;
    clock_.Restart();
    if (column_ > lastColumn) {
      *out_ << qxendl;
      column_ = 0;
    }
    *out_ << ".";
    out_->flush();
    ++column_;
  }

  OutputClock clock_;
  std::size_t column_ = 0;  // characters on the present line
  qxostream* out_;          // borrowed
};

QXDotTracer::QXDotTracer(float interval, qxostream& out)
    : impl_(std::make_unique<QXDotTracerImpl>(interval, out)) {}
QXDotTracer::QXDotTracer(const std::string& title, float interval, qxostream& out)
    : impl_(std::make_unique<QXDotTracerImpl>(title, interval, out)) {}
QXDotTracer::~QXDotTracer() = default;

QXDotTracer::operator QXTracerBase&() {
  return *impl_;
}

}  // namespace QXSystem
