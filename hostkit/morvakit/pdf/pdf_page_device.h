#pragma once

#include <cstdint>

#include <TextOutputDev.h>

#include "morvakit/pdf/pdf_component.h"

namespace morvakit {

/// Gathers the text of a page, and knows when a page asks for more than a page can want.
class PdfPageDevice final : public TextOutputDev {
 public:
  /// In reading order, finding columns and lines takes time that grows with the square of their
  /// number; in the order of the file it takes none.
  PdfPageDevice(TextOutputFunc output, void* target, PdfSink& sink, bool is_reading_order)
      : TextOutputDev(output, target, false, 0.0, !is_reading_order),
        sink_(sink),
        character_limit_(is_reading_order ? ordered_limit : unordered_limit) {
    setTextEOL(eolUnix);
    setTextPageBreaks(false);
  }

  bool is_crowded() const { return characters_ > character_limit_; }
  /// Whether the rest of the page was left out, as drawing it would take no end.
  bool is_cut() const { return is_cut_; }
  bool stop_wanted() { return is_crowded() || is_cut() || !sink_.keep_going(); }

  void drawChar(GfxState* state, double x, double y, double dx, double dy, double origin_x,
                double origin_y, CharCode code, int bytes, Unicode const* characters,
                int count) override {
    if (++characters_ <= character_limit_) {
      TextOutputDev::drawChar(state, x, y, dx, dy, origin_x, origin_y, code, bytes, characters,
                              count);
    }
  }
  /// Forms may contain forms, so that few bytes ask for endless work: said to be drawn by this
  /// device, which draws nothing, they end at once when it is to stop.
  bool useDrawForm() override {
    is_cut_ = is_cut_ || ++forms_ > form_limit;
    return stop_wanted();
  }
  void saveState(GfxState* state) override {
    is_cut_ = is_cut_ || ++depth_ > saved_state_limit;
    TextOutputDev::saveState(state);
  }
  void restoreState(GfxState* state) override {
    --depth_;
    TextOutputDev::restoreState(state);
  }
  void endPage() override {
    if (!is_crowded() || character_limit_ == unordered_limit) {
      TextOutputDev::endPage();
    }
  }

 private:
  static constexpr std::int64_t ordered_limit = 60000;
  static constexpr std::int64_t unordered_limit = 2000000;
  static constexpr std::int64_t saved_state_limit = 10000;
  static constexpr std::int64_t form_limit = 100000;

  PdfSink& sink_;
  std::int64_t character_limit_;
  std::int64_t characters_ = 0;
  std::int64_t depth_ = 0;
  std::int64_t forms_ = 0;
  bool is_cut_ = false;
};

}  // namespace morvakit
