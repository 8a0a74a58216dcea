#include <qxsystem/interface/interface_opts.h>

#include <qxsystem/core/error.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/files.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/options.h>
#include <qxsystem/platform/ostream.h>

namespace QXSystem {

using QXPlatform::qxerr;
using QXPlatform::qxout;

bool QXConfigureItf(QXInterface& interface, const QXOptions& options) {
  interface.SetName(options.GetName());
  interface.SetBrief(options.GetBrief());
  interface.SetOrderPriority(options.GetOrderPriority());
  for (QXIter<const std::string> line = options.GetDetail(); line; ++line)
    interface.AddDetail(*line);
  for (QXIter<QXOptions> child = options.GetOptions(/*recursive=*/false); child; ++child)
    if (!QXConfigureItf(*interface.AddInterface(), *child)) return false;
  for (QXIter<QXParameter> p = options.GetParameters(/*recursive=*/false); p; ++p)
    interface.AddParameter(*p);
  return true;
}

namespace {

bool TakeValues(QXParameter& parameter, const QXParameter& source) {
  parameter.ClearValues();
  for (QXIter<const std::string> text = source.GetStringValues(); text; ++text)
    if (!parameter.AddStringValue(*text)) return false;
  return parameter.LoadValue();
}

// The child of this name, else the first options of this name further below.
QXOptions* FindOptions(const QXOptions& options, const std::string& name) {
  for (QXIter<QXOptions> child = options.GetOptions(/*recursive=*/false); child; ++child)
    if (child->GetName() == name) return &*child;
  return options.GetOption(name);
}

// `index` is that of `options`.
bool Update(QXOptions& options, const ParameterIndex& index, const QXInterface& interface) {
  for (QXIter<QXInterface> category = interface.GetInterfaces(/*recursive=*/false); category;
       ++category) {
    QXOptions* child = FindOptions(options, category->GetName());
    if (!(child ? QXUpdateOpts(*child, *category) : Update(options, index, *category)))
      return false;
  }
  for (QXIter<QXParameter> source = interface.GetParameters(/*recursive=*/false); source;
       ++source) {
    QXParameter* parameter =
        source->GetHasValue(0) ? index.ParameterWithFullname(source->GetName()) : nullptr;
    if (parameter && !TakeValues(*parameter, *source)) return false;
  }
  return true;
}

}  // namespace

bool QXUpdateOpts(QXOptions& options, const QXInterface& interface) {
  return Update(options, ParameterIndex(options), interface);
}

unsigned QXConfigureOpts(QXOptions& options, int argc, char** argv, bool write) {
  QXInterface interface;
  if (!QXConfigureItf(interface, options)) return QXOptsStatus::Failure;
  if (QXCheckHelp(interface, argc, argv, /*exitOnEmpty=*/true, qxerr)) return QXOptsStatus::Help;
  if (!QXParseCommandLine(interface, argc, argv, /*requirements=*/nullptr, QXErrorLevel::Error,
                          /*checkHelp=*/true))
    return QXOptsStatus::Failure;
  if (write) {
    QXWriteSettings(interface, qxout, /*all=*/true, /*mode=*/"");
    qxout.flush();
    qxerr << "\n";
  }
  return QXUpdateOpts(options, interface) ? QXOptsStatus::Done : QXOptsStatus::Failure;
}

}  // namespace QXSystem
