// An input stream that tells a tracer how far it has been read.
#pragma once

#include <qxsystem/core/export.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/util/qxtracerbase.h>

namespace QXSystem {

/// Reads through to another stream and reports to a tracer, at every refill of
/// the buffer but the first, how many units of 256 bytes have been passed and
/// how many there are: `SetProgress` takes 32 bits, and files exceed that. A
/// size that the source does not know is reported as 0.
///
/// Behind a stream that is itself a wrapper, and unpacks its source perhaps,
/// position and size are those of the innermost source; else every refill counts
/// as a full buffer, so the last report may lie beyond the size.
class QXSYSTEM_API qxprogressstream : public QXPlatform::qxiwrapperstream {
public:
  /// Reads from `stream`, or nothing where that is null, and deletes it at the
  /// end where it is owned. For the tracer see SetTracer.
  qxprogressstream(QXPlatform::qxistream* stream, bool ownStream, QXTracerBase* tracer,
                   bool ownTracer);
  ~qxprogressstream() override;

  /// Reports to `tracer` from now on, null for nobody. With `own` this stream
  /// deletes it; a previous one that was owned is deleted. The present one given
  /// again changes nothing but the ownership.
  void SetTracer(QXTracerBase* tracer, bool own);

  bool open(const char* name) override;

protected:
  bool _qxfill() override;
  bool _qxseek(long back) override;
  void _qxset(QXPlatform::qxistream* inner) override;

private:
  QXTracerBase* tracer_ = nullptr;
  bool ownTracer_ = false;
  long position_ = 0;  // in the source, behind the bytes in memory
};

}  // namespace QXSystem
