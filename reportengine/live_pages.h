#pragma once
// The pages of a report that is still being laid out: the layout pass adds
// them from its thread while the viewer shows them from the window's. Once
// the run ends the pages get their final closing texts ("Page N of M").
#include <QString>
#include <memory>
#include <mutex>
#include <vector>

#include "reportengine/paginator.h"

namespace cvve::reportengine {

class LivePages {
 public:
  enum class State { kRunning, kComplete, kStopped };

  // `frame`: the layout's paper, fonts and title, made in the window's thread
  // (the fonts are used where they are made).
  explicit LivePages(ReportLayout frame);

  // The layout pass's side.
  void Add(PageDescription page);
  // The run ended: page p's final closing texts are closing(p).
  template <class Closing>
  void Complete(int pages, Closing&& closing) {
    std::vector<std::vector<PageText>> texts;
    texts.reserve(static_cast<std::size_t>(pages));
    for (int p = 0; p < pages; ++p) texts.push_back(closing(p));
    Complete(std::move(texts));
  }
  void Complete(std::vector<std::vector<PageText>> closing);
  // The run ended without completing (cancelled, failed): the pages so far
  // stay, without their total. Nothing once complete.
  void Stop(const QString& why);

  // From any thread. Count() includes the pages taken away by TakeWhole.
  int Count() const;
  State Now() const;
  QString Why() const;  // what stopped the run
  // Page `index` as it is now (a copy); an empty page outside the pages.
  PageDescription Page(int index) const;
  const ReportLayout& Frame() const { return frame_; }
  // After Complete: the whole layout, the pages moved into it (they are
  // gone from here then).
  std::shared_ptr<const ReportLayout> TakeWhole();

 private:
  const ReportLayout frame_;
  mutable std::mutex mutex_;
  std::vector<PageDescription> pages_;
  int taken_ = 0;
  State state_ = State::kRunning;
  QString why_;
};

}  // namespace cvve::reportengine
