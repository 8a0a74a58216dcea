// Every public header, for programs that would rather include one. Headers of
// the parts in use compile faster.
//
// The header with JSON handlers shows RapidJSON in its interface; it takes part
// where RapidJSON's headers are installed.
#pragma once

#include <qxsystem/platform/binaryio.h>
#include <qxsystem/platform/clock.h>
#include <qxsystem/platform/compress.h>
#include <qxsystem/platform/export.h>
#include <qxsystem/platform/file.h>
#include <qxsystem/platform/halffloat.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/malloca.h>
#include <qxsystem/platform/number.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/platform/stream.h>
#include <qxsystem/platform/thread.h>
#include <qxsystem/platform/threadlocal.h>
#include <qxsystem/platform/version.h>

#include <qxsystem/core/base.h>
#include <qxsystem/core/basedata.h>
#include <qxsystem/core/baseimpl.h>
#include <qxsystem/core/datatype.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/errorimpl.h>
#include <qxsystem/core/errortest.h>
#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/core/memcache.h>
#include <qxsystem/core/nesting.h>
#include <qxsystem/core/predicate.h>
#include <qxsystem/core/prediter.h>
#include <qxsystem/core/sortediter.h>
#include <qxsystem/core/stliter.h>
#include <qxsystem/core/tagmap.h>
#include <qxsystem/core/threadsafe.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/core/version.h>

#include <qxsystem/util/bitvector.h>
#include <qxsystem/util/consoletracer.h>
#include <qxsystem/util/dots.h>
#include <qxsystem/util/dottracer.h>
#include <qxsystem/util/hanoi.h>
#include <qxsystem/util/progressstream.h>
#include <qxsystem/util/qxformat.h>
#include <qxsystem/util/qxnumber.h>
#include <qxsystem/util/qxstring.h>
#include <qxsystem/util/qxtokenize.h>
#include <qxsystem/util/qxtracerbase.h>
#include <qxsystem/util/role.h>
#include <qxsystem/util/statusfiletracer.h>
#include <qxsystem/util/unionfind.h>
#include <qxsystem/util/utfconvert.h>
#include <qxsystem/util/uuid.h>

#include <qxsystem/numerics/qcprms.h>
#include <qxsystem/numerics/ran_num_generators.h>
#include <qxsystem/numerics/rand.h>
#include <qxsystem/numerics/regrotation.h>
#include <qxsystem/numerics/simplerms.h>
#include <qxsystem/numerics/specialfunction.h>
#include <qxsystem/numerics/stats.h>
#include <qxsystem/numerics/tensor2mat.h>

#include <qxsystem/colour/color.h>
#include <qxsystem/colour/colorgradient.h>

#include <qxsystem/qxb/qxannotate.h>
#include <qxsystem/qxb/qxb.h>
#include <qxsystem/qxb/qxbhand.h>
#include <qxsystem/qxb/qxbrfxn.h>
#include <qxsystem/qxb/qxbwfxn.h>
#include <qxsystem/qxb/qxheader.h>

#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/factory.h>
#include <qxsystem/interface/files.h>
#include <qxsystem/interface/help.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/interface_opts.h>
#include <qxsystem/interface/options.h>
#include <qxsystem/interface/parameter.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/interface/systemnamespace.h>
#include <qxsystem/interface/writer.h>

#include <qxsystem/json/base85.h>
#include <qxsystem/json/json.h>

#include <qxsystem/grid/grid.h>
#include <qxsystem/grid/grid_util.h>
#include <qxsystem/grid/qxbgrid.h>

#include <qxsystem/records/datarecord.h>
#include <qxsystem/records/field.h>
#include <qxsystem/records/metadata.h>
#include <qxsystem/records/recordbuffer.h>
#include <qxsystem/records/recordio.h>
#include <qxsystem/records/recordjson.h>
#include <qxsystem/records/types.h>

#if __has_include(<rapidjson/document.h>)
#include <qxsystem/json/jsonhandler.h>
#endif
