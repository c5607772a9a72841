// The charger and everything around it: the hardware in this process, the daemon and its peers in
// theirs. What is done here is begun and goes on while Look is called again and again.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "virtualcharger/hardware/chargerhardware.h"
#include "virtualcharger/scenario/ibench.h"
#include "virtualcharger/scenario/processes.h"
#include "virtualcharger/scenario/reportedhardware.h"

// What can be seen and heard from outside at one moment.
struct SView {
  std::chrono::milliseconds time;  // since the charger was made
  std::string state;               // as the daemon reported it last; empty before
  SLamp lamp;
  std::string brightness;               // of the lit channels: "76%"; "uneven"
  std::array<std::uint32_t, 3> levels;  // the brightest ones that the channels reach
  std::array<std::string, 3> patterns;  // of the channels red, green, blue
  std::string ledState;                 // as the daemon reported it last; empty before
  std::string display;                  // of the meter: "100%"; empty before
  unsigned beeps;                       // up to now
};

// What is seen in words, and since when it is so.
struct SSeen {
  std::string words;
  std::chrono::steady_clock::time_point since;
};

// What cannot be begun throws CStepFailure.
//
// Threads: one.
class CBench : public IBench {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  // That each daemon begins with.
  static constexpr auto kOwnLogLevel = Log::ELogLevel::EInfo;

  CBench(const CProcesses::SSettings& processes, const CChargerHardware::SSettings& hardware);

  TimePoint Begin() const { return mBegin; }
  CChargerHardware& Hardware() { return mHardware; }
  const CChargerHardware& Hardware() const { return mHardware; }
  CProcesses& Processes() { return mProcesses; }
  const CProcesses& Processes() const { return mProcesses; }

  // Returns the error's text; everything but the hardware works then, too. Called while the process
  // has one thread.
  [[nodiscard]] std::optional<std::string> StartHardware();
  bool HasHardware() const { return !mReported; }
  // With no process running: light and lamp as they are at the beginning, and the store, unless it
  // is to have this text.
  void Renew(const std::string& store);

  // Takes in what has happened.
  void Look();
  SView View() const;
  // As looked at last.
  const SSeen& Lamp() const { return mLamp; }
  const SSeen& Brightness() const { return mBrightness; }

  Deed Stop();
  // Ends when what has begun in the daemon has ended: it takes one event after the other.
  Deed Settle();

  Deed Request(ERequest request, bool accepted) override;
  Deed Trigger(int event, bool accepted) override;
  Deed SetConnector(int state) override;
  Deed SetError(int identifier, bool on) override;
  Deed SetLight(double lux) override;
  Deed SetStored(const std::string& key, const Json::Value& value) override;
  Deed SetMeter(bool accepts) override;
  Deed SetLogLevel(Log::ELogLevel level) override;
  Deed Control(EProcessAction action, const std::string& process) override;
  Deed SetFault(const std::string& device, const std::string& attribute,
                const SFault& fault) override;
  Deed Heal(const std::string& device, const std::string& attribute) override;
  Deed HealAll() override;

  // What the daemon logs now, or will when it is started.
  Log::ELogLevel LogLevel() const { return mLogLevel; }

  // By the peer: what it told last, where not all subscribers have replied to it.
  const std::map<std::string, std::string>& Unanswered() const { return mUnanswered; }

 private:
  Deed Ask(const std::string& question, bool accepted);
  std::string Reply(const std::string& outcome) const;
  std::string Note(const std::string& peer, const std::string& outcome) const;
  Deed Tell(const std::string& peer, const std::string& command);
  void CheckHardware() const;
  void CheckSilence() const;
  void SpareTheConsole();

  const TimePoint mBegin = std::chrono::steady_clock::now();
  CChargerHardware mHardware;
  // Where the hardware is not mounted.
  std::optional<CReportedHardware> mReported;
  CWriteHistory::Mark mLooked = 0;
  SSeen mLamp{"", mBegin};
  SSeen mBrightness{"", mBegin};
  Log::ELogLevel mLogLevel = kOwnLogLevel;
  std::map<std::string, std::string> mUnanswered;
  CProcesses mProcesses;
};

// "blue pulsating", "off".
std::string LampWords(const SLamp& lamp);
// "76%", "7.6%".
std::string Percent(double value);
// Whether the line is what the daemon logs about the event that Settle has it take.
bool IsOfSettling(std::string_view line);
