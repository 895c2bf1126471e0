// Overlays: the annotation records of a run drawn over the current image, shapes with
// Cairo and text with Pango, into a 32-bit RGB image.
//
// How records become pixels (the host's choices; the instructions leave them open):
// - Coordinates are pixel coordinates with the pixel centres on whole numbers: (50, 50)
//   is the centre of pixel column 50, row 50.
// - Colour 0 is the default colour given by the caller; every other colour is
//   0x00BBGGRR (red in the low byte); the top byte is ignored.
// - A point is an x-shaped cross, a point set a + mark per point, a pixel set one
//   whole pixel per point (rounded to the nearest pixel). An infinite line is clipped
//   to the image. A circle or a set of circles with a radius that is not positive draws
//   nothing; a rectangle turns by its angle (radians) around its centre, from the x
//   axis toward the y axis (clockwise on screen, y pointing down).
// - Text starts with its top-left corner at the given point, in the font named by
//   "font" ("Sans 12", "Serif Bold 20"; empty: Sans 10; sizes above 200 points are cut
//   to 200). Its background, when asked for, is a black box, or a white one behind
//   dark text (blue, black); without it the glyphs get a thin halo of that colour.
// - A shape's label is written beside it in the shape's colour (Sans 9); labels and
//   texts are kept inside the image where they fit.
// - A shape with a coordinate that is not finite, or farther than a million pixels from
//   the origin, is skipped (segments and lines are clipped instead), so that hostile
//   values never reach the rasteriser.
// - A 16-bit grey background is stretched so that its largest value is white (12-bit
//   camera data would otherwise be nearly black); 8-bit grey is shown as it is; a 32-bit
//   image is taken as R, G, B and a fourth byte that is ignored.
#include <cairo.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "zet/ZetHost.h"

namespace zet::host {
namespace {

constexpr double kFar = 1e6;
constexpr double kMaxFontPoints = 200;
constexpr const char* kDefaultFont = "Sans 10";
constexpr const char* kLabelFont = "Sans 9";

struct SRgb {
  double r, g, b;
};

SRgb Rgb(int color, int defaultColor) {
  const auto c = static_cast<uint32_t>(color == 0 ? defaultColor : color);
  return {(c & 0xFF) / 255.0, ((c >> 8) & 0xFF) / 255.0, ((c >> 16) & 0xFF) / 255.0};
}

bool Near(double v) { return std::isfinite(v) && std::fabs(v) <= kFar; }
bool Near(const CZetPoint& p) { return Near(p.x) && Near(p.y); }

// The record's field by name; null when the record has none.
const CZetObject* Field(const SAnnotationRecord& r, const char* name) {
  for (const auto& [key, value] : r.fields)
    if (key == name) return &value;
  return nullptr;
}

template <class T>
const T* Typed(const SAnnotationRecord& r, const char* name) {
  const CZetObject* o = Field(r, name);
  return o ? o->Get<T>() : nullptr;
}

int IntField(const SAnnotationRecord& r, const char* name) {
  const CZetObject* o = Field(r, name);
  return o ? o->AsInt() : 0;
}

bool BoolField(const SAnnotationRecord& r, const char* name) {
  const CZetObject* o = Field(r, name);
  return o && o->AsBool();
}

std::string TextField(const SAnnotationRecord& r, const char* name) {
  const CZetObject* o = Field(r, name);
  return o ? Cp1252ToUtf8(o->AsString()) : std::string();
}

// Liang-Barsky: clips the segment a-b to the box [lo, hi] x [lo, hiY]; false when
// nothing of it is inside.
bool Clip(double x0, double y0, double x1, double y1, double lo, double hiX, double hiY,
          CZetPoint* a, CZetPoint* b) {
  double t0 = 0.0, t1 = 1.0;
  const double dx = x1 - x0, dy = y1 - y0;
  const double p[4] = {-dx, dx, -dy, dy};
  const double q[4] = {x0 - lo, hiX - x0, y0 - lo, hiY - y0};
  for (int i = 0; i < 4; ++i) {
    if (p[i] == 0.0) {
      if (q[i] < 0.0) return false;
      continue;
    }
    const double t = q[i] / p[i];
    if (p[i] < 0.0)
      t0 = std::max(t0, t);
    else
      t1 = std::min(t1, t);
    if (t0 > t1) return false;
  }
  *a = CZetPoint(x0 + t0 * dx, y0 + t0 * dy);
  *b = CZetPoint(x0 + t1 * dx, y0 + t1 * dy);
  return true;
}

class CPainter {
 public:
  CPainter(cairo_t* cr, int width, int height, int defaultColor)
      : m_cr(cr), m_width(width), m_height(height), m_default(defaultColor),
        m_lineWidth(std::max(1.0, std::min(width, height) / 300.0)) {
    cairo_set_line_width(cr, m_lineWidth);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    // Pixel centres on whole coordinates.
    cairo_translate(cr, 0.5, 0.5);
  }

  void Draw(const SAnnotationRecord& r) {
    const std::string& op = r.op;
    SetColor(IntField(r, "color"));
    const std::string label = TextField(r, "label");
    if (op == "AddPoint") {
      if (const CZetPoint* p = Typed<CZetPoint>(r, "point"); p && Near(*p)) {
        Cross(*p, Arm(), true);
        Label(label, p->x + Arm() + 2, p->y + 2);
      }
    } else if (op == "AddSegment") {
      const CZetPoint* s = Typed<CZetPoint>(r, "start");
      const CZetPoint* e = Typed<CZetPoint>(r, "end");
      CZetPoint a, b;
      if (s && e && ClipToView(s->x, s->y, e->x, e->y, &a, &b)) {
        Segment(a, b);
        Label(label, (a.x + b.x) / 2 + 3, (a.y + b.y) / 2 + 3);
      }
    } else if (op == "AddLine") {
      if (const CZetLine* l = Typed<CZetLine>(r, "line")) InfiniteLine(*l, label);
    } else if (op == "AddCircle") {
      if (const CZetCircle* c = Typed<CZetCircle>(r, "circle"))
        Circle(CZetPoint(c->cx, c->cy), c->r, BoolField(r, "fill"), label);
    } else if (op == "AddCircles") {
      const CZetPointVector* centres = Typed<CZetPointVector>(r, "points");
      const CZetObject* radius = Field(r, "radius");
      if (centres && radius) {
        const bool fill = BoolField(r, "fill");
        for (const CZetPoint& c : centres->Std())
          Circle(c, radius->AsDouble(), fill, &c == centres->GetStorage() ? label : "");
      }
    } else if (op == "AddRect") {
      if (const CZetRect* rect = Typed<CZetRect>(r, "rect")) Rect(*rect, BoolField(r, "fill"), label);
    } else if (op == "AddPoints" || op == "AddPixels" || op == "AddPolyline") {
      if (const CZetPointVector* v = Typed<CZetPointVector>(r, "points")) {
        if (op == "AddPolyline")
          Polyline(v->Std());
        else if (op == "AddPoints")
          for (const CZetPoint& p : v->Std()) {
            if (Near(p)) Cross(p, Arm(), false);
          }
        else
          for (const CZetPoint& p : v->Std()) {
            if (Near(p)) Pixel(p);
          }
        if (v->Size() > 0 && Near((*v)[0])) Label(label, (*v)[0].x + Arm() + 2, (*v)[0].y + 2);
      }
    } else if (op == "AddText") {
      const CZetPoint* p = Typed<CZetPoint>(r, "point");
      if (p && Near(*p))
        Text(label, TextField(r, "font"), p->x, p->y, BoolField(r, "background"));
    }
  }

 private:
  double Arm() const { return 3.0 * m_lineWidth + 1.0; }

  void SetColor(int color) {
    m_color = Rgb(color, m_default);
    cairo_set_source_rgb(m_cr, m_color.r, m_color.g, m_color.b);
  }

  // Clipped to the image with a margin wider than any stroke.
  bool ClipToView(double x0, double y0, double x1, double y1, CZetPoint* a, CZetPoint* b) const {
    if (!std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) || !std::isfinite(y1))
      return false;
    const double m = 4 * m_lineWidth + 2;
    return Clip(x0, y0, x1, y1, -m, m_width + m, m_height + m, a, b);
  }

  void Segment(const CZetPoint& a, const CZetPoint& b) {
    cairo_move_to(m_cr, a.x, a.y);
    cairo_line_to(m_cr, b.x, b.y);
    cairo_stroke(m_cr);
  }

  // An x-shaped cross, or a + mark.
  void Cross(const CZetPoint& p, double arm, bool diagonal) {
    const double d = diagonal ? arm : 0.0;
    cairo_move_to(m_cr, p.x - arm, p.y - d);
    cairo_line_to(m_cr, p.x + arm, p.y + d);
    cairo_move_to(m_cr, p.x - d, p.y + arm);
    cairo_line_to(m_cr, p.x + d, p.y - arm);
    cairo_stroke(m_cr);
  }

  void Pixel(const CZetPoint& p) {
    cairo_rectangle(m_cr, std::round(p.x) - 0.5, std::round(p.y) - 0.5, 1, 1);
    cairo_fill(m_cr);
  }

  // The line's points are d * n + t * (cos a, sin a) with the normal n = (-sin a, cos a):
  // a is the line's direction, d its signed distance from the origin.
  void InfiniteLine(const CZetLine& l, const std::string& label) {
    if (!std::isfinite(l.a) || !std::isfinite(l.d)) return;
    const double ux = std::cos(l.a), uy = std::sin(l.a);
    const double px = -uy * l.d, py = ux * l.d;
    const double reach = 2.0 * (std::fabs(l.d) + m_width + m_height);
    CZetPoint a, b;
    if (!ClipToView(px - reach * ux, py - reach * uy, px + reach * ux, py + reach * uy, &a, &b))
      return;
    Segment(a, b);
    Label(label, a.x + 0.1 * (b.x - a.x) + 3, a.y + 0.1 * (b.y - a.y) + 3);
  }

  void Circle(const CZetPoint& c, double radius, bool fill, const std::string& label) {
    if (!Near(c) || !Near(radius) || radius <= 0.0) return;
    cairo_new_sub_path(m_cr);
    cairo_arc(m_cr, c.x, c.y, radius, 0.0, 2.0 * M_PI);
    fill ? cairo_fill(m_cr) : cairo_stroke(m_cr);
    Label(label, c.x + 0.71 * radius + 3, c.y - 0.71 * radius - LabelHeight());
  }

  void Rect(const CZetRect& r, bool fill, const std::string& label) {
    if (!Near(r.cx) || !Near(r.cy) || !Near(r.w) || !Near(r.h) || !std::isfinite(r.angle))
      return;
    const double c = std::cos(r.angle), s = std::sin(r.angle);
    double maxX = -kFar, minY = kFar;
    for (int i = 0; i < 4; ++i) {
      const double hx = (i == 1 || i == 2 ? 0.5 : -0.5) * r.w, hy = (i >= 2 ? 0.5 : -0.5) * r.h;
      const double x = r.cx + hx * c - hy * s, y = r.cy + hx * s + hy * c;
      i == 0 ? cairo_move_to(m_cr, x, y) : cairo_line_to(m_cr, x, y);
      maxX = std::max(maxX, x);
      minY = std::min(minY, y);
    }
    cairo_close_path(m_cr);
    fill ? cairo_fill(m_cr) : cairo_stroke(m_cr);
    Label(label, maxX + 3, minY);
  }

  // Segment by segment, each clipped; consecutive unclipped segments stay one path, so
  // that their joins are drawn as joins.
  void Polyline(const std::vector<CZetPoint>& v) {
    bool open = false;
    CZetPoint last;
    for (size_t i = 1; i < v.size(); ++i) {
      CZetPoint a, b;
      if (!ClipToView(v[i - 1].x, v[i - 1].y, v[i].x, v[i].y, &a, &b)) {
        open = false;
        continue;
      }
      if (!open || !(a == last)) cairo_move_to(m_cr, a.x, a.y);
      cairo_line_to(m_cr, b.x, b.y);
      last = b;
      open = b == v[i];
    }
    cairo_stroke(m_cr);
  }

  using LayoutPtr = std::unique_ptr<PangoLayout, decltype(&g_object_unref)>;

  LayoutPtr Layout(const std::string& text, const std::string& font) {
    LayoutPtr layout(pango_cairo_create_layout(m_cr), g_object_unref);
    PangoFontDescription* desc =
        pango_font_description_from_string(font.empty() ? kDefaultFont : font.c_str());
    const double size = pango_font_description_get_size(desc) / double(PANGO_SCALE);
    if (size <= 0.0)
      pango_font_description_set_size(desc, 10 * PANGO_SCALE);
    else if (size > kMaxFontPoints)
      pango_font_description_set_size(desc, static_cast<int>(kMaxFontPoints * PANGO_SCALE));
    pango_layout_set_font_description(layout.get(), desc);
    pango_font_description_free(desc);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    return layout;
  }

  double LabelHeight() {
    if (m_labelHeight < 0) {
      int h = 0;
      pango_layout_get_pixel_size(Layout("Ag", kLabelFont).get(), nullptr, &h);
      m_labelHeight = h;
    }
    return m_labelHeight;
  }

  void Text(const std::string& text, const std::string& font, double x, double y,
            bool background) {
    if (text.empty()) return;
    LayoutPtr layout = Layout(text, font);
    PangoRectangle ink, logical;
    pango_layout_get_pixel_extents(layout.get(), &ink, &logical);
    // Kept inside the image where it fits; the text's own corner otherwise.
    x = std::clamp(x, 0.0, std::max(0.0, m_width - 1.0 - logical.width));
    y = std::clamp(y, 0.0, std::max(0.0, m_height - 1.0 - logical.height));
    // Text on black, or dark text (blue, black) on white: a box behind it when asked for, else a
    // thin halo around the glyphs, so that it reads over any image.
    const double luma = 0.299 * m_color.r + 0.587 * m_color.g + 0.114 * m_color.b;
    const double contrast = luma > 0.25 ? 0.0 : 1.0;
    cairo_set_source_rgb(m_cr, contrast, contrast, contrast);
    if (background) {
      cairo_rectangle(m_cr, x + logical.x - 1.5, y + logical.y - 1.5, logical.width + 2,
                      logical.height + 2);
      cairo_fill(m_cr);
    }
    cairo_move_to(m_cr, x - 0.5, y - 0.5);
    pango_cairo_layout_path(m_cr, layout.get());
    if (!background) {
      cairo_save(m_cr);
      cairo_set_line_width(m_cr, 2.0);
      cairo_stroke_preserve(m_cr);
      cairo_restore(m_cr);
    }
    cairo_set_source_rgb(m_cr, m_color.r, m_color.g, m_color.b);
    cairo_fill(m_cr);
  }

  void Label(const std::string& label, double x, double y) {
    if (!label.empty()) Text(label, kLabelFont, x, y, false);
  }

  cairo_t* m_cr;
  double m_width, m_height;
  int m_default;
  double m_lineWidth;
  SRgb m_color{0, 0, 0};
  double m_labelHeight = -1;
};

// The background as Cairo's RGB24 pixels (0x00RRGGBB in native order).
void Paint(const CZetImage& image, cairo_surface_t* surface) {
  const int w = image.Width(), h = image.Height();
  unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  int maxGrey = 0;
  if (image.Attr() == kZetImageMono16) {
    for (int y = 0; y < h; ++y) {
      const uint8_t* row = image.Row(y);
      for (int x = 0; x < w; ++x) maxGrey = std::max(maxGrey, row[2 * x] | row[2 * x + 1] << 8);
    }
  }
  for (int y = 0; y < h; ++y) {
    const uint8_t* in = image.Row(y);
    auto* out = reinterpret_cast<uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride);
    for (int x = 0; x < w; ++x) {
      uint32_t r, g, b;
      if (image.Attr() == kZetImageMono8) {
        r = g = b = in[x];
      } else if (image.Attr() == kZetImageMono16) {
        const uint32_t v = in[2 * x] | in[2 * x + 1] << 8;
        r = g = b = maxGrey ? v * 255 / maxGrey : 0;
      } else {
        r = in[4 * x];
        g = in[4 * x + 1];
        b = in[4 * x + 2];
      }
      out[x] = r << 16 | g << 8 | b;
    }
  }
  cairo_surface_mark_dirty(surface);
}

}  // namespace

std::string RenderOverlay(const CZetImage& background,
                          const std::vector<SAnnotationRecord>& records, int defaultColor,
                          CZetImage& out) {
  if (!background.IsCreated()) return "no image to draw the overlay on";
  const int w = background.Width(), h = background.Height();
  if (w > 32767 || h > 32767) return "image too large for an overlay";  // Cairo's limit
  if (static_cast<uint64_t>(w) * static_cast<uint64_t>(h) > MaxImagePixels())
    return "image too large for an overlay: more than " + std::to_string(MaxImagePixels()) +
           " pixels";
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h), cairo_surface_destroy);
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
    return "cannot create an overlay surface";
  Paint(background, surface.get());
  {
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cr(cairo_create(surface.get()),
                                                          cairo_destroy);
    CPainter painter(cr.get(), w, h, defaultColor);
    for (const SAnnotationRecord& r : records) painter.Draw(r);
    if (cairo_status(cr.get()) != CAIRO_STATUS_SUCCESS)
      return std::string("overlay drawing failed: ") + cairo_status_to_string(cairo_status(cr.get()));
  }
  cairo_surface_flush(surface.get());
  if (out.Create(w, h, kZetImageColor32) != kZetImageOk) return "cannot allocate the overlay";
  const unsigned char* data = cairo_image_surface_get_data(surface.get());
  const int stride = cairo_image_surface_get_stride(surface.get());
  for (int y = 0; y < h; ++y) {
    const auto* in = reinterpret_cast<const uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride);
    uint8_t* row = out.Row(y);
    for (int x = 0; x < w; ++x) {
      row[4 * x] = static_cast<uint8_t>(in[x] >> 16);
      row[4 * x + 1] = static_cast<uint8_t>(in[x] >> 8);
      row[4 * x + 2] = static_cast<uint8_t>(in[x]);
      row[4 * x + 3] = 0;
    }
  }
  return "";
}

}  // namespace zet::host
