#include "report/picture/Canvas.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>
#include <fmt/format.h>

#include <QString>
#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kVectorPixelsPerPoint = 4.0;  // 288 a printed inch
constexpr double kColumnPixels = 800.0;
constexpr int kGradientStops = 64;
constexpr const char* kFont = "DejaVu Sans";

std::string Extension(const std::string& path) {
    std::string text = std::filesystem::path(path).extension().string();
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

cairo_status_t Append(void* bytes, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

constexpr double kMostPixels = 32767.0;  // along a side, of the drawing library

void CheckPixels(const std::string& path, double width, double height) {
    if (width <= kMostPixels && height <= kMostPixels) return;
    throw ZfError(
        fmt::format("Cannot draw {}: {:.0f} x {:.0f} pixels are too many, {:.0f} along a side are the "
                    "most: take another number of images in a row, or a smaller width",
                    path, width, height, kMostPixels));
}

cairo_surface_t* NewSurface(const std::string& extension, std::string& bytes, double width, double height) {
    if (extension == ".svg") return cairo_svg_surface_create_for_stream(Append, &bytes, width, height);
    if (extension == ".pdf") {
        cairo_surface_t* const pdf = cairo_pdf_surface_create_for_stream(Append, &bytes, width, height);
        cairo_pdf_surface_set_metadata(pdf, CAIRO_PDF_METADATA_CREATE_DATE,
                                       "");  // the same picture, the same bytes
        return pdf;
    }
    return cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(std::lround(width)),
                                      static_cast<int>(std::lround(height)));
}

/// Bytes that are no UTF-8 would end all drawing; they become replacement characters, and so do line ends.
std::string OneLine(const std::string& text) {
    return QString::fromStdString(text).simplified().toStdString();
}

void Check(cairo_status_t status, const std::string& path) {
    if (status == CAIRO_STATUS_SUCCESS) return;
    const std::string reason = status == CAIRO_STATUS_NO_MEMORY ? "there is not enough memory for it"
                                                                : cairo_status_to_string(status);
    throw ZfError(fmt::format("Cannot draw {}: {}", path, reason));
}

}  // namespace

void Canvas::Release::operator()(_cairo* context) const {
    cairo_destroy(context);
}

void Canvas::Release::operator()(_cairo_surface* surface) const {
    cairo_surface_destroy(surface);
}

Canvas::Canvas(std::string path) : path_(std::move(path)) {
    if (!CanWrite(path_))
        throw ZfError("Cannot draw " + path_ + ": the name has to end in .png, .svg or .pdf");
}

void Canvas::BeginPage(double pageWidth, double pageHeight, double width) {
    scale_ = Scale(path_, pageWidth, width);
    if (!surface_) {
        if (IsPixelFormat(path_)) CheckPixels(path_, pageWidth * scale_, pageHeight * scale_);
        surface_.reset(NewSurface(Extension(path_), bytes_, pageWidth * scale_, pageHeight * scale_));
        context_.reset(cairo_create(surface_.get()));
    } else {
        if (Extension(path_) != ".pdf")
            throw ZfError("Cannot draw " + path_ + ": only a PDF has several pages");
        cairo_show_page(context_.get());
        cairo_pdf_surface_set_size(surface_.get(), pageWidth * scale_, pageHeight * scale_);
        cairo_identity_matrix(context_.get());
    }
    Check(cairo_status(context_.get()), path_);
    cairo_scale(context_.get(), scale_, scale_);
    SetColour({1.0, 1.0, 1.0});
    cairo_paint(context_.get());
}

Canvas::~Canvas() = default;

bool Canvas::CanWrite(const std::string& path) {
    const std::string extension = Extension(path);
    return extension == ".png" || extension == ".svg" || extension == ".pdf";
}

bool Canvas::IsPixelFormat(const std::string& path) {
    return Extension(path) == ".png";
}

double Canvas::Scale(const std::string& path, double pageWidth, double width) {
    const bool pixels = IsPixelFormat(path);
    if (width == 0.0) return pixels ? kColumnPixels / kColumnWidth : 1.0;
    if (pixels && !(width >= 100 && width <= 20000))
        throw ZfError("The width of a PNG has to lie between 100 and 20000 pixels");
    if (!pixels && !(width >= 20 && width <= 2000))
        throw ZfError("The width of an SVG or PDF has to lie between 20 and 2000 mm");
    return (pixels ? width : width / 25.4 * 72.0) / pageWidth;
}

double Canvas::PixelsPerPoint() const {
    return IsPixelFormat(path_) ? scale_ : kVectorPixelsPerPoint;
}

void Canvas::SetColour(const Colour& colour, double opacity) {
    cairo_set_source_rgba(context_.get(), colour.red, colour.green, colour.blue, opacity);
}

void Canvas::SetLine(double width, const std::vector<double>& dashes) {
    cairo_set_line_width(context_.get(), width);
    cairo_set_dash(context_.get(), dashes.data(), static_cast<int>(dashes.size()), 0.0);
}

void Canvas::Line(double x0, double y0, double x1, double y1) {
    cairo_move_to(context_.get(), x0, y0);
    cairo_line_to(context_.get(), x1, y1);
    cairo_stroke(context_.get());
}

void Canvas::Circle(double x, double y, double radius) {
    cairo_new_path(context_.get());
    cairo_arc(context_.get(), x, y, radius, 0.0, 2 * kPi);
    cairo_stroke(context_.get());
}

void Canvas::Rectangle(double x, double y, double width, double height) {
    cairo_rectangle(context_.get(), x, y, width, height);
    cairo_stroke(context_.get());
}

void Canvas::FilledRectangle(double x, double y, double width, double height) {
    cairo_set_antialias(context_.get(), CAIRO_ANTIALIAS_NONE);
    cairo_rectangle(context_.get(), x, y, width, height);
    cairo_fill(context_.get());
    cairo_set_antialias(context_.get(), CAIRO_ANTIALIAS_DEFAULT);
}

void Canvas::Polyline(const std::vector<double>& x, const std::vector<double>& y) {
    cairo_set_line_join(context_.get(), CAIRO_LINE_JOIN_ROUND);
    bool drawing = false;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const bool known = std::isfinite(x[i]) && std::isfinite(y[i]);
        if (known && drawing) cairo_line_to(context_.get(), x[i], y[i]);
        if (known && !drawing) cairo_move_to(context_.get(), x[i], y[i]);
        drawing = known;
    }
    cairo_stroke(context_.get());
}

void Canvas::Dot(double x, double y, double radius) {
    cairo_new_path(context_.get());
    cairo_arc(context_.get(), x, y, radius, 0.0, 2 * kPi);
    cairo_fill(context_.get());
}

void Canvas::SetFont(const TextStyle& style) {
    cairo_select_font_face(context_.get(), kFont, CAIRO_FONT_SLANT_NORMAL,
                           style.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context_.get(), style.size);
}

void Canvas::Text(double x, double y, const std::string& text, const TextStyle& style) {
    const std::string line = OneLine(text);
    SetFont(style);
    cairo_text_extents_t extents;
    cairo_text_extents(context_.get(), line.c_str(), &extents);
    // Vertically by the height of digits, so that all labels of a row share their base line.
    const double height = 0.73 * style.size;
    cairo_save(context_.get());
    cairo_translate(context_.get(), x, y);
    cairo_rotate(context_.get(), -style.turn);
    cairo_move_to(context_.get(), extents.x_advance * (style.alignX - 1) / 2,
                  height * (style.alignY + 1) / 2);
    if (style.halo) {
        cairo_text_path(context_.get(), line.c_str());
        SetColour({1.0, 1.0, 1.0}, 0.85);
        SetLine(0.25 * style.size);
        cairo_stroke_preserve(context_.get());
        SetColour({});
        cairo_fill(context_.get());
    } else {
        cairo_show_text(context_.get(), line.c_str());
    }
    cairo_restore(context_.get());
}

void Canvas::FittedText(double x, double y, double width, const std::string& text, TextStyle style) {
    style.size *= std::min(1.0, width / std::max(1.0, TextWidth(text, style)));
    SetColour({});
    Text(x, y, text, style);
}

double Canvas::TextWidth(const std::string& text, const TextStyle& style) {
    SetFont(style);
    cairo_text_extents_t extents;
    cairo_text_extents(context_.get(), OneLine(text).c_str(), &extents);
    return extents.x_advance;
}

void Canvas::DiscImage(double x, double y, double radius, std::vector<std::uint32_t> pixels,
                       std::int32_t side) {
    const std::unique_ptr<_cairo_surface, Release> image(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, side, side));
    Check(cairo_surface_status(image.get()), path_);
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(image.get()));
    unsigned char* const data = cairo_image_surface_get_data(image.get());
    const auto width = static_cast<std::size_t>(side);
    for (std::size_t row = 0; row < width; ++row)
        std::copy_n(reinterpret_cast<const unsigned char*>(pixels.data() + row * width),
                    width * sizeof(std::uint32_t), data + row * stride);
    cairo_surface_mark_dirty(image.get());
    cairo_save(context_.get());
    cairo_new_path(context_.get());
    cairo_arc(context_.get(), x, y, radius, 0.0, 2 * kPi);
    cairo_clip(context_.get());
    cairo_translate(context_.get(), x - radius, y - radius);
    cairo_scale(context_.get(), 2 * radius / side, 2 * radius / side);
    cairo_set_source_surface(context_.get(), image.get(), 0.0, 0.0);
    cairo_pattern_set_extend(cairo_get_source(context_.get()), CAIRO_EXTEND_PAD);
    cairo_paint(context_.get());
    cairo_restore(context_.get());
}

void Canvas::Gradient(double x, double y, double width, double height, ColourMap map) {
    cairo_pattern_t* const pattern = cairo_pattern_create_linear(0.0, y + height, 0.0, y);
    for (int i = 0; i <= kGradientStops; ++i) {
        const double fraction = static_cast<double>(i) / kGradientStops;
        const Colour colour = ColourAt(map, fraction);
        cairo_pattern_add_color_stop_rgb(pattern, fraction, colour.red, colour.green, colour.blue);
    }
    cairo_set_source(context_.get(), pattern);
    cairo_pattern_destroy(pattern);
    cairo_rectangle(context_.get(), x, y, width, height);
    cairo_fill(context_.get());
}

void Canvas::ClipTo(double x, double y, double width, double height) {
    cairo_save(context_.get());
    cairo_rectangle(context_.get(), x, y, width, height);
    cairo_clip(context_.get());
}

void Canvas::EndClip() {
    cairo_restore(context_.get());
}

void Canvas::Finish() {
    Check(cairo_status(context_.get()), path_);
    if (IsPixelFormat(path_))
        Check(cairo_surface_write_to_png_stream(surface_.get(), Append, &bytes_), path_);
    cairo_surface_finish(surface_.get());
    Check(cairo_surface_status(surface_.get()), path_);
    WriteWholeFile(path_, bytes_);
}

}  // namespace qvre
