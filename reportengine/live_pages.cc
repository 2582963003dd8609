#include "reportengine/live_pages.h"

namespace cvve::reportengine {

LivePages::LivePages(ReportLayout frame) : frame_(std::move(frame)) {}

void LivePages::Add(PageDescription page) {
  const std::lock_guard lock(mutex_);
  pages_.push_back(std::move(page));
}

void LivePages::Complete(std::vector<std::vector<PageText>> closing) {
  const std::lock_guard lock(mutex_);
  for (std::size_t p = 0; p < pages_.size() && p < closing.size(); ++p) {
    pages_[p].closing = std::move(closing[p]);
  }
  state_ = State::kComplete;
}

void LivePages::Stop(const QString& why) {
  const std::lock_guard lock(mutex_);
  if (state_ != State::kRunning) return;
  state_ = State::kStopped;
  why_ = why;
}

int LivePages::Count() const {
  const std::lock_guard lock(mutex_);
  return static_cast<int>(pages_.size()) + taken_;
}

LivePages::State LivePages::Now() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

QString LivePages::Why() const {
  const std::lock_guard lock(mutex_);
  return why_;
}

PageDescription LivePages::Page(int index) const {
  const std::lock_guard lock(mutex_);
  if (index < 0 || index >= static_cast<int>(pages_.size())) return {};
  return pages_[static_cast<std::size_t>(index)];
}

std::shared_ptr<const ReportLayout> LivePages::TakeWhole() {
  const std::lock_guard lock(mutex_);
  auto whole = std::make_shared<ReportLayout>(frame_);
  taken_ += static_cast<int>(pages_.size());
  whole->pages = std::move(pages_);
  pages_.clear();
  return whole;
}

}  // namespace cvve::reportengine
