#include "ui/icons/svg.h"

#include <wx/image.h>

#include <algorithm>

namespace kestrel {
namespace {

wxImage drawn(const wxBitmapBundle& svg, const wxSize& size) {
    return svg.GetBitmap(size).ConvertToImage();
}

// True when the toolkit hands out colours that are multiplied by their opacity
// already. It then multiplies them again to show them, and every smooth edge of
// a light icon has a dark fringe.
bool multipliesTwice() {
    static const bool twice = [] {
        const auto white = wxBitmapBundle::FromSVG(
            "<svg width='2' height='2' viewBox='0 0 2 2'>"
            "<rect width='2' height='2' fill='#ffffff' fill-opacity='0.5'/></svg>",
            wxSize(2, 2));
        return drawn(white, wxSize(2, 2)).GetRed(0, 0) < 200;
    }();
    return twice;
}

void divideByOpacity(wxImage& image) {
    const std::size_t pixels =
        static_cast<std::size_t>(image.GetWidth()) * static_cast<std::size_t>(image.GetHeight());
    unsigned char* colour = image.GetData();
    const unsigned char* opacity = image.GetAlpha();
    for (std::size_t i = 0; i < pixels * 3; ++i) {
        const int alpha = std::max<int>(opacity[i / 3], 1);
        colour[i] =
            static_cast<unsigned char>(std::min((colour[i] * 255 + alpha / 2) / alpha, 255));
    }
}

// Draws as the toolkit's own bundle does, with the colours put right.
class SvgBundle final : public wxBitmapBundleImpl {
  public:
    explicit SvgBundle(const wxBitmapBundle& svg) : svg_(svg) {}

    wxSize GetDefaultSize() const override { return svg_.GetDefaultSize(); }
    wxSize GetPreferredBitmapSizeAtScale(double scale) const override {
        return svg_.GetPreferredBitmapSizeAtScale(scale);
    }
    wxBitmap GetBitmap(const wxSize& size) override {
        if (!last_.IsOk() || last_.GetSize() != size) {
            wxImage image = drawn(svg_, size);
            if (image.HasAlpha()) divideByOpacity(image);
            last_ = wxBitmap(image);
        }
        return last_;
    }

  private:
    wxBitmapBundle svg_;
    wxBitmap last_;
};

}  // namespace

wxBitmapBundle bundleFromSvg(const std::string& svg, int size) {
    wxBitmapBundle bundle = wxBitmapBundle::FromSVG(svg.c_str(), wxSize(size, size));
    if (!bundle.IsOk() || !multipliesTwice()) return bundle;
    return wxBitmapBundle::FromImpl(new SvgBundle(bundle));
}

}  // namespace kestrel
