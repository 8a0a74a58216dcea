#include <qxsystem/util/statusfiletracer.h>

#include <algorithm>
#include <utility>
#include <vector>

#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/progress_private.h>
#include <qxsystem/util/qxformat.h>

namespace QXSystem {

class QXStatusFileTracerImpl : public QXTracerBase {
public:
  QXStatusFileTracerImpl(std::string fileName, float interval)
      : clock_(interval), fileName_(std::move(fileName)) {}

  ~QXStatusFileTracerImpl() override { WriteFile("Finished\n"); }

  QXStatusFileTracerImpl(const QXStatusFileTracerImpl&) = delete;
  QXStatusFileTracerImpl& operator=(const QXStatusFileTracerImpl&) = delete;

  void SetTask(std::string task) override {
    tasks_.back() = OneLine(std::move(task));
    UpdateStatusFile();
  }
  void Push(std::string task) override {
    tasks_.push_back(OneLine(std::move(task)));
    statuses_.emplace_back();
    UpdateStatusFile();
  }
  void Pop() override {
    if (tasks_.size() > 1) {
      tasks_.pop_back();
      statuses_.pop_back();
    }
    UpdateStatusFile();
  }
  void Refresh() override { UpdateStatusFile(); }
  void SetProgress(unsigned done, unsigned total) override {
    SetStatus(QXMakeString(" (%u of %u done)", done, total));
  }
  void SetProgress(double percent) override {
    if (LimitPercent(percent))
      SetStatus(" (%" + PercentText(static_cast<float>(percent)) + " done)");
  }
  bool Aborted() override { return false; }

private:
  static std::string OneLine(std::string task) {
    std::replace_if(
        task.begin(), task.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return task;
  }

  void SetStatus(std::string status) {
    statuses_.back() = std::move(status);
    UpdateStatusFile();
  }

  void UpdateStatusFile() {
    if (!clock_.IsDue()) return;
    std::string text;
    for (std::size_t level = 0; level < tasks_.size(); ++level)
      text.append(level, ' ').append(tasks_[level]).append(statuses_[level]).append("\n");
    WriteFile(text);
    clock_.Restart();
  }

  void WriteFile(const std::string& text) const { QXPlatform::qxofstream(fileName_) << text; }

  // One entry for each level, never empty.
  std::vector<std::string> tasks_{1}, statuses_{1};
  OutputClock clock_;
  std::string fileName_;
};

QXStatusFileTracer::QXStatusFileTracer(std::string fileName, float interval)
    : impl_(std::make_shared<QXStatusFileTracerImpl>(std::move(fileName), interval)) {}
QXStatusFileTracer::~QXStatusFileTracer() = default;
QXStatusFileTracer::QXStatusFileTracer(const QXStatusFileTracer& other) = default;
QXStatusFileTracer& QXStatusFileTracer::operator=(const QXStatusFileTracer& other) = default;

QXStatusFileTracer::operator QXTracerBase&() {
  return *impl_;
}

}  // namespace QXSystem
