#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "report/picture/ColourMap.h"

struct _cairo;          // NOLINT: cairo's own names
struct _cairo_surface;  // NOLINT

namespace qvre {

/// Width in points of a picture for one column of a journal, 85 mm.
constexpr double kColumnWidth = 85.0 / 25.4 * 72.0;

/// How a text sits on its point: -1 left (above), 0 centred, 1 right (below) of what the point is at.
struct TextStyle {
    double size = 7.5;  ///< points
    double alignX = 0.0;
    double alignY = 0.0;
    bool bold = false;
    bool halo = false;  ///< white outline, to be read on colours
    double turn = 0.0;  ///< radians, counter-clockwise
};

/// A page to draw on, or several in a PDF, written as PNG, SVG or PDF by the extension of its file. Lengths
/// are in points (1/72 inch) from the top left corner, y downwards.
class Canvas {
public:
    explicit Canvas(std::string path);
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas();

    /// True for a name that ends in .png, .svg or .pdf, in either case.
    static bool CanWrite(const std::string& path);
    static bool IsPixelFormat(const std::string& path);  ///< .png
    /// Scale at which a page of `pageWidth` points comes out `width` wide, in pixels for PNG (100 to 20000)
    /// and in mm for SVG and PDF (20 to 2000). A width of 0 stands for the natural one: 800 pixels or 85 mm
    /// for a column. Throws ZfError.
    static double Scale(const std::string& path, double pageWidth, double width);

    /// Begins a white page, enlarged to the width of Scale. Throws ZfError for a second one unless the file
    /// is a PDF.
    void BeginPage(double pageWidth, double pageHeight, double width = 0.0);

    double PixelsPerPoint() const;  ///< fineness for embedded images

    void SetColour(const Colour& colour, double opacity = 1.0);
    void SetLine(double width, const std::vector<double>& dashes = {});
    void Line(double x0, double y0, double x1, double y1);
    void Circle(double x, double y, double radius);
    void Rectangle(double x, double y, double width, double height);
    void FilledRectangle(double x, double y, double width, double height);      ///< neighbours leave no gap
    void Polyline(const std::vector<double>& x, const std::vector<double>& y);  ///< broken at NaN
    void Dot(double x, double y, double radius);
    void Text(double x, double y, const std::string& text, const TextStyle& style);
    void FittedText(double x, double y, double width, const std::string& text,
                    TextStyle style);  ///< smaller if too wide, black
    double TextWidth(const std::string& text, const TextStyle& style);

    /// side * side pixels, 0xRRGGBB row by row, over the square around the disc, of which the disc is shown.
    void DiscImage(double x, double y, double radius, std::vector<std::uint32_t> pixels, std::int32_t side);
    /// Rectangle filled from the low end at the bottom to the high end at the top.
    void Gradient(double x, double y, double width, double height, ColourMap map);
    void ClipTo(double x, double y, double width, double height);
    void EndClip();

    /// Writes the file; throws ZfError, and leaves nothing behind then.
    void Finish();

private:
    struct Release {
        void operator()(_cairo* context) const;
        void operator()(_cairo_surface* surface) const;
    };
    void SetFont(const TextStyle& style);

    std::string path_;
    double scale_ = 1.0;
    std::string bytes_;  // of an SVG or PDF; outlives the surface, which may write to it when it is released
    std::unique_ptr<_cairo_surface, Release> surface_;
    std::unique_ptr<_cairo, Release> context_;
};

}  // namespace qvre
