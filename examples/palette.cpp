// The palettes and gradients of the library as a picture to look at.
//
//   palette colours.png
//   palette -colors "#000080 #ffffff #800000" -exponent 3 -width 1024 colours.png
//
// Every row of the picture is a palette or a gradient; standard output tells which,
// with its colours. The gradients have the same stops, at even distances from
// -range to range, and differ in how they map that axis. Exit status 1 tells a
// fault, with its message.

#include <png.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <qxsystem/colour/color.h>
#include <qxsystem/colour/colorgradient.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/qxstring.h>

#include "program.h"

using namespace QXPlatform;
using namespace QXSystem;

namespace {

constexpr const char* kVersion = "1.0";

constexpr const char* kInterface = R"(
!BRIEF draws palettes and gradients
!PARAMETER -out 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF The PNG file to write
!END
!PARAMETER -width 2
  !TYPE int
  !DEFAULT 640
  !LEGAL_RANGE 1 10000
  !BRIEF Pixels in a row
!END
!PARAMETER -height 3
  !TYPE int
  !DEFAULT 40
  !LEGAL_RANGE 1 1000
  !BRIEF Height of a row
!END
!PARAMETER -gap 4
  !TYPE int
  !DEFAULT 8
  !LEGAL_RANGE 0 1000
  !BRIEF Distance of the rows
!END
!PARAMETER -colors 5
  !TYPE string
  !LIST true
  !DEFAULT #0000ff
  !DEFAULT #ffffff
  !DEFAULT #ff0000
  !SIMPLE true
  !BRIEF The colours of the gradients, as #RRGGBB or #RRGGBBAA
!END
!PARAMETER -range 6
  !TYPE double
  !DEFAULT 4
  !LEGAL_RANGE 0 inf
  !ILLEGAL_VALUE 0
  !BRIEF The gradients go from the negative of this value to it
!END
!PARAMETER -exponent 7
  !TYPE double
  !DEFAULT 2
  !LEGAL_RANGE 0.1 10
  !BRIEF The exponent of the gradient that has one
!END
!PARAMETER -steps 8
  !TYPE int
  !DEFAULT 12
  !LEGAL_RANGE 0 10000
  !BRIEF Even steps from the first colour to the last
!END
!PARAMETER -status 9
  !TYPE string
  !BRIEF Keep a file that tells how far the program is
!END
)";

std::vector<QXColor> Collect(QXIterBase<QXColor>* cursor) {
  std::vector<QXColor> colors;
  for (QXIter<QXColor> color = cursor; color; ++color) colors.push_back(*color);
  return colors;
}

// A row of the picture: a colour for every part of it from 0 to 1.
class Row {
public:
  explicit Row(std::string name) : name_(std::move(name)) {}
  virtual ~Row() = default;
  Row(const Row&) = delete;
  Row& operator=(const Row&) = delete;

  const std::string& Name() const { return name_; }
  virtual QXColor At(double part) const = 0;
  virtual std::string Describe() const = 0;

private:
  std::string name_;
};

class Swatches : public Row {
public:
  Swatches(std::string name, QXIterBase<QXColor>* colors)
      : Row(std::move(name)), colors_(Collect(colors)) {}

  QXColor At(double part) const override {
    if (colors_.empty()) return QXTransparentColor;
    return colors_[static_cast<std::size_t>(part * static_cast<double>(colors_.size()))];
  }
  std::string Describe() const override {
    std::string text;
    for (const QXColor& color : colors_) text += " " + color.GetText(color.GetA() != 255);
    return text;
  }

private:
  std::vector<QXColor> colors_;
};

template <class Gradient>
class Gradation : public Row {
public:
  Gradation(std::string name, Gradient gradient)
      : Row(std::move(name)), gradient_(std::move(gradient)) {}

  QXColor At(double part) const override {
    const double low = gradient_.GetMinValue(), high = gradient_.GetMaxValue();
    return gradient_.GetColorAt(low + part * (high - low));
  }
  std::string Describe() const override {
    std::string text;
    for (QXIter<QXColorStop> stop = gradient_.GetStops(); stop; ++stop)
      text += QXMakeString(" %g ", stop->value) + stop->color.GetText(stop->color.GetA() != 255);
    return text;
  }

private:
  Gradient gradient_;
};

template <class Gradient>
std::unique_ptr<Row> MakeGradation(std::string name, Gradient gradient,
                                   const std::vector<QXColor>& colors, double range) {
  for (std::size_t i = 0; i < colors.size(); ++i) {
    const double part = static_cast<double>(i) / static_cast<double>(colors.size() - 1);
    gradient.AddStop({range * (2 * part - 1), colors[i]});
  }
  return std::make_unique<Gradation<Gradient>>(std::move(name), std::move(gradient));
}

std::vector<std::unique_ptr<Row>> MakeRows(const QXInterface& itf) {
  std::vector<QXColor> colors;
  const auto* list = dynamic_cast<QXTypedParameter<std::string>*>(itf.GetParameter("-colors"));
  for (QXIter<const std::string> text = list->GetSettings(); text; ++text)
    colors.emplace_back(*text);
  if (colors.size() < 2) Fail("-colors needs two colours");
  const auto range = Setting<double>(itf, "-range");
  const auto steps = static_cast<unsigned>(Setting<int>(itf, "-steps"));

  std::vector<std::unique_ptr<Row>> rows;
  const auto swatches = [&rows](const char* name, QXIterBase<QXColor>* cursor) {
    rows.push_back(std::make_unique<Swatches>(name, cursor));
  };
  const auto gradation = [&](const char* name, auto gradient) {
    rows.push_back(MakeGradation(name, std::move(gradient), colors, range));
  };
  swatches("light", QXGetLightColors());
  swatches("vivid", QXGetVividColors());
  swatches("deep", QXGetDeepColors());
  swatches("contrast", QXGetContrastColors(/*withBlackAndWhite=*/true));
  swatches("steps", QXGetColors(colors.front(), colors.back(), steps));
  gradation("linear", QXLinearColorGradient());
  gradation("exponent", QXExponentColorGradient(Setting<double>(itf, "-exponent")));
  gradation("exponential", QXExponentialColorGradient());
  gradation("logarithmic", QXLogarithmicColorGradient());
  return rows;
}

// Four bytes for each pixel, line after line; gaps are transparent.
struct Picture {
  Picture(std::size_t w, std::size_t h) : width(w), height(h), rgba(4 * w * h) {}

  void Set(std::size_t x, std::size_t y, const QXColor& color) {
    std::copy_n(color.GetRGBA(), 4, &rgba[4 * (x + y * width)]);
  }

  void Write(const std::string& name) const {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.format = PNG_FORMAT_RGBA;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    std::vector<unsigned char> file(PNG_IMAGE_PNG_SIZE_MAX(image));
    png_alloc_size_t size = file.size();
    if (!png_image_write_to_memory(&image, file.data(), &size, /*convert_to_8_bit=*/0, rgba.data(),
                                   /*row_stride=*/0, /*colormap=*/nullptr))
      Fail(name + ": " + image.message);
    WriteFile(name, file.data(), size);
  }

  const std::size_t width, height;
  std::vector<unsigned char> rgba;
};

void Draw(const QXInterface& itf, QXTracerBase& tracer) {
  const auto rows = MakeRows(itf);
  const auto rowHeight = static_cast<std::size_t>(Setting<int>(itf, "-height"));
  const auto gap = static_cast<std::size_t>(Setting<int>(itf, "-gap"));
  Picture picture(static_cast<std::size_t>(Setting<int>(itf, "-width")),
                  rows.size() * (rowHeight + gap) - gap);

  tracer.Push("Drawing");
  for (std::size_t r = 0; r < rows.size(); ++r) {
    const std::size_t top = r * (rowHeight + gap);
    for (std::size_t x = 0; x < picture.width; ++x) {
      const double part = (static_cast<double>(x) + 0.5) / static_cast<double>(picture.width);
      const QXColor color = rows[r]->At(part);
      for (std::size_t y = top; y < top + rowHeight; ++y) picture.Set(x, y, color);
    }
    tracer.SetProgress(static_cast<unsigned>(r + 1), static_cast<unsigned>(rows.size()));
  }
  tracer.Pop();

  picture.Write(Setting<std::string>(itf, "-out"));
  for (std::size_t r = 0; r < rows.size(); ++r)
    qxout << QXMakeString("%5zu %-11s", r * (rowHeight + gap), rows[r]->Name().c_str())
          << rows[r]->Describe() << "\n";
}

}  // namespace

int main(int argc, char** argv) {
  QXInterface itf(kInterface);
  if (!QXParseCommandLine(itf, kVersion, argc, argv, /*requirements=*/nullptr, QXErrorLevel::Error,
                          /*checkHelp=*/true))
    return 1;
  Progress progress(Setting<std::string>(itf, "-status"));
  Draw(itf, progress);
  return 0;
}
