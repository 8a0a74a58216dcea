#include <qxsystem/util/qxtracerbase.h>

namespace QXSystem {

QXTracerBase::~QXTracerBase() = default;

QXNullTracer::~QXNullTracer() = default;
void QXNullTracer::SetTask(std::string) {}
void QXNullTracer::Push(std::string) {}
void QXNullTracer::Pop() {}
void QXNullTracer::Refresh() {}
void QXNullTracer::SetProgress(unsigned, unsigned) {}
void QXNullTracer::SetProgress(double) {}
bool QXNullTracer::Aborted() {
  return false;
}

namespace {

// Without a destructor, so that they serve destructors of other statics.
union Eternal {
  constexpr Eternal() : tracer() {}
  ~Eternal() {}
  QXNullTracer tracer;
};
Eternal nullTracer, noTracer;

}  // namespace

QXNullTracer& NullTracer = nullTracer.tracer;
QXNullTracer& QXNoTracer = noTracer.tracer;

}  // namespace QXSystem
