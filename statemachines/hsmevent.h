// Events of a state machine: a type with a name, a payload and a verdict that a poster may wait
// for.
#pragma once

#include <future>
#include <iterator>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

// What all events of one type share; its address tells the types apart.
struct CHsmEventType {
  unsigned number;  // dense from 0 within a machine
};

class IHsmEvent {
 public:
  virtual const std::string& GetName() const = 0;
  virtual ~IHsmEvent() = default;
  IHsmEvent(const IHsmEvent&) = delete;
  IHsmEvent& operator=(const IHsmEvent&) = delete;

  const CHsmEventType& GetType() const { return *mType; }

  // The verdict: true as soon as the machine reacts, false when it does not take the event. Once an
  // event; a poster takes it before posting, because nothing else orders it with the machine. get()
  // throws std::future_error (broken promise) where the machine has dropped the event. Never wait
  // on the machine's own thread.
  std::future<bool> GetHandled();

  // For the machine's thread: gives the verdict.
  void SetHandled(bool handled) {
    // Most events have no waiter, and fulfilling a promise costs a system call.
    mVerdict = handled ? EVerdict::EHandled : EVerdict::EUnhandled;
    if (mAwaited) {
      Fulfil();
    }
  }

  // For the machine: breaks the promise, so that nobody waits for a verdict that will not come.
  void Drop() { const std::promise<bool> dropped(std::move(mHandled)); }

 protected:
  explicit IHsmEvent(const CHsmEventType& type) : mType(&type) {}

 private:
  enum class EVerdict : char { ENone, EUnhandled, EHandled };

  void Fulfil();

  const CHsmEventType* const mType;
  std::promise<bool> mHandled;
  // Handed from thread to thread with the event itself, by the machine's queue.
  bool mAwaited = false;
  EVerdict mVerdict = EVerdict::ENone;
};

// The names of a machine's events, kNames[N]; specialised for the machine's tag.
template <typename Tag>
struct HsmEventNames;

// Event N of the machine that the tag names, with copies of its payload.
template <typename Tag, unsigned N, typename... Payload>
class CHsmEvent final : public IHsmEvent {
 public:
  static constexpr CHsmEventType kType{N};

  explicit CHsmEvent(Payload... payload) : IHsmEvent(kType), mPayload(std::move(payload)...) {}

  const std::string& GetName() const override {
    static_assert(N < std::size(HsmEventNames<Tag>::kNames), "the event has no name");
    static const std::string name(HsmEventNames<Tag>::kNames[N]);
    return name;
  }

  const std::tuple<Payload...>& GetPayload() const { return mPayload; }

 private:
  const std::tuple<Payload...> mPayload;
};
