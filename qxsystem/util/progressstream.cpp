#include <qxsystem/util/progressstream.h>

#include <algorithm>

namespace QXSystem {

qxprogressstream::qxprogressstream(qxistream* stream, bool ownStream, QXTracerBase* tracer,
                                   bool ownTracer)
    : qxiwrapperstream(stream, ownStream), tracer_(tracer), ownTracer_(ownTracer) {}

qxprogressstream::~qxprogressstream() {
  SetTracer(nullptr, /*own=*/false);
}

void qxprogressstream::SetTracer(QXTracerBase* tracer, bool own) {
  if (ownTracer_ && tracer != tracer_) delete tracer_;
  tracer_ = tracer;
  ownTracer_ = own;
}

bool qxprogressstream::open(const char* name) {
  position_ = 0;
  return qxiwrapperstream::open(name);
}

bool qxprogressstream::_qxfill() {
  if (tracer_ && position_ != 0) {
    const auto units = [](long bytes) { return static_cast<unsigned>(std::max(bytes, 0L) >> 8); };
    tracer_->SetProgress(units(position_), units(size()));
  }
  if (!qxiwrapperstream::_qxfill()) return false;
  if (dynamic_cast<qxiwrapperstream*>(Inner()))
    position_ = _qxtell();
  else
    position_ += static_cast<long>(QXPlatform::QXStreamBufferSize);
  return true;
}

bool qxprogressstream::_qxseek(long back) {
  position_ -= back;
  if (qxiwrapperstream::_qxseek(back)) return true;
  position_ += back;
  return false;
}

void qxprogressstream::_qxset(qxistream* inner) {
  position_ = 0;
  qxiwrapperstream::_qxset(inner);
}

}  // namespace QXSystem
