// A hierarchical state machine on one thread: a queue of events, each handed to the current leaf,
// which reacts by its own row of the table, by a row of the composite around all leaves, or not.
// HsmDefinition<H> (hsmtable.h) says what the machine is; H has its actions.
//
// Every step is a trace line: init, entry, exit, and what became of each event.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

#include "statemachines/hsmstate.h"

// Threads: one thread runs the machine, and with it all actions; the others post and stop. Posters
// wait for an event's verdict, if at all, on the event's future.
template <typename H>
class CHsm final : public IHsmInterface {
 public:
  using Definition = HsmDefinition<H>;
  using State = TopState<CHsm>;

  explicit CHsm(std::shared_ptr<H> handler) : mHandler(std::move(handler)) {}
  CHsm(const CHsm&) = delete;
  CHsm& operator=(const CHsm&) = delete;

  void PostEvent(std::shared_ptr<IHsmEvent> event) override;

  // The first Run enters the initial leaf; what its entry throws ends the process. A later one goes
  // on in the state, and with the queue, that the one before left.
  void Run() override;

  // What is still queued stays there, without a verdict.
  void Stop() override;

  bool IsRunning() const override { return mRunning; }

  // For the owner, after Run has returned: drops what is queued and, until the next Run, what is
  // posted. The futures of dropped events throw std::future_error.
  void DropQueuedEvents();

  // The leaf that the machine is in; null before the first Run. For the machine's thread.
  const State* CurrentState() const { return mState; }

 private:
  using Composite = CompState<CHsm, 0, CompState<CHsm, 0, State>>;
  template <typename, unsigned, typename>
  friend class LeafState;

  template <unsigned... Index>
  static const State& StateOf(unsigned leaf, std::integer_sequence<unsigned, Index...>) {
    static constexpr std::tuple<LeafState<CHsm, Index + 1, Composite>...> kStates;
    static constexpr std::array<const State*, sizeof...(Index)> kByNumber{
        &std::get<Index>(kStates)...};
    return *kByNumber[leaf - 1];
  }

  H& Handler() { return *mHandler; }
  void GoTo(unsigned leaf);
  void Initialize() noexcept;
  bool TakeEvent(std::shared_ptr<IHsmEvent>& event);

  const std::shared_ptr<H> mHandler;
  const State* mState = nullptr;                  // the machine's thread only
  std::deque<std::shared_ptr<IHsmEvent>> mQueue;  // guarded by mMutex
  std::atomic<bool> mRunning = false;             // written under mMutex
  bool mDropping = false;                         // guarded by mMutex
  std::condition_variable mChanged;
  std::mutex mMutex;
};

template <typename H>
void CHsm<H>::PostEvent(std::shared_ptr<IHsmEvent> event) {
  {
    const std::lock_guard lock(mMutex);
    if (mDropping) {
      if (event) {
        event->Drop();
      }
      return;
    }
    mQueue.push_back(std::move(event));
  }
  mChanged.notify_all();
}

template <typename H>
void CHsm<H>::Run() {
  {
    const std::lock_guard lock(mMutex);
    mRunning = true;
    mDropping = false;
  }
  if (mState == nullptr) {
    Initialize();
  }
  for (std::shared_ptr<IHsmEvent> event; TakeEvent(event); event.reset()) {
    mState->Receive(*this, event);
  }
}

template <typename H>
void CHsm<H>::Stop() {
  {
    const std::lock_guard lock(mMutex);
    mRunning = false;
  }
  mChanged.notify_all();
}

template <typename H>
void CHsm<H>::DropQueuedEvents() {
  std::deque<std::shared_ptr<IHsmEvent>> dropped;
  {
    const std::lock_guard lock(mMutex);
    mDropping = true;
    dropped.swap(mQueue);
  }
  for (const auto& event : dropped) {
    // A waiting poster may hold the event itself, so releasing it would not wake the poster.
    if (event) {
      event->Drop();
    }
  }
}

template <typename H>
void CHsm<H>::Initialize() noexcept {
  HsmTrace::Step(Definition::kName, "init");
  GoTo(Definition::kInitial);
}

template <typename H>
void CHsm<H>::GoTo(unsigned leaf) {
  const State& target =
      StateOf(leaf, std::make_integer_sequence<unsigned, Definition::kLeaves.size()>());
  target.Enter(*this);
  mState = &target;
}

template <typename H>
bool CHsm<H>::TakeEvent(std::shared_ptr<IHsmEvent>& event) {
  std::unique_lock lock(mMutex);
  mChanged.wait(lock, [this] { return !mQueue.empty() || !mRunning; });
  if (!mRunning) {
    return false;
  }
  event = std::move(mQueue.front());
  mQueue.pop_front();
  return true;
}
