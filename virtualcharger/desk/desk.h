// The charger under the page: it lives until it is interrupted, does what the page's clients ask
// for, and tells them what is seen, heard and said.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "virtualcharger/desk/chronicle.h"
#include "virtualcharger/desk/filenotice.h"
#include "virtualcharger/desk/inbox.h"
#include "virtualcharger/desk/keptcharger.h"
#include "virtualcharger/desk/lampmessage.h"
#include "virtualcharger/desk/library.h"
#include "virtualcharger/desk/logfeed.h"
#include "virtualcharger/desk/messagefeed.h"
#include "virtualcharger/desk/others.h"
#include "virtualcharger/desk/play.h"
#include "virtualcharger/desk/recorder.h"
#include "virtualcharger/desk/runfolder.h"
#include "virtualcharger/desk/storepicture.h"
#include "virtualcharger/page/deskregistry.h"
#include "virtualcharger/scenario/interrupt.h"

struct SDeskSettings {
  std::string name;                   // of the charger
  std::string remedy;                 // why there is no virtual hardware and what to do; empty
  std::optional<std::uint16_t> port;  // as for the page's server
};

// Threads: one, but for the page's server.
class CDesk {
 public:
  // The hardware is there, or has failed to be, and wakes the inbox. Throws std::runtime_error
  // where the page cannot be served.
  CDesk(SDeskSettings settings, CBench& bench, CInterrupt& interrupt, const CLibrary& library,
        const CDeskRegistry& registry, std::shared_ptr<CInbox> inbox);

  // As of the page's server.
  std::uint16_t Port() const { return mServer.Port(); }
  std::string Url() const { return mServer.Url(); }

  // Until the user interrupts it; the charger ends orderly then. Throws CInterrupted if the user
  // does not wait for that, and CStepFailure where something does not end.
  void Run();

 private:
  using TimePoint = CPageClock::TimePoint;

  // A step that goes on, and who wants to know how it ends.
  struct SUnderWay {
    CInbox::ClientId client;
    Json::Value id;
    Deed deed;
    std::optional<std::size_t> recorded;  // its place
  };

  struct SPlayRequest {
    SUnderWay asked;
    CPlay::SPlayed played;
    bool back;  // to the person's charger
  };

  [[noreturn]] void Live();
  void Turn();
  void Play();
  void Wait();
  int Timeout() const;
  void Read(const CInbox::SLetter& letter);
  void BeginStep(const CInbox::SLetter& letter);
  void BeginPlay(const CInbox::SLetter& letter);
  void BeginWayBack(const SUnderWay& asked);
  void BeginPlay(SPlayRequest request);
  void StopPlay(const SUnderWay& asked);
  void Record(const SUnderWay& asked, const Json::Value& on);
  CRecorder::SShown Shown() const;
  bool GoOn(SUnderWay& step);
  void Tell(const SUnderWay& step, bool ok, const std::string& text);
  bool IsInMotion() const;
  void LookForTrouble();
  void Publish();
  Json::Value State() const;
  void Greet(CInbox::ClientId client, bool mayWrite);
  void PublishTokens();
  void PublishRecording();
  void PublishRows(const char* type, Json::Value rows);

  const SDeskSettings mSettings;
  CBench& mBench;
  CInterrupt& mInterrupt;
  const CLibrary& mLibrary;
  const CPageClock mClock;
  const std::shared_ptr<CInbox> mInbox;
  CPlay mPlay;
  std::optional<SPlayRequest> mPlayRequest;
  CTimeline mTimeline;
  CChronicle mChronicle;
  CLampMessage mLamp;
  CFileNotice mFiles;
  COthers mOthers;
  const int mStoreFolder;
  CRunFolder mRunFolder;
  std::string mTrouble;  // with it
  SStorePicture mStore;
  const Json::Value mNewSettings;
  CKeptCharger mKept;
  CRecorder mRecorder;
  std::string mRecording;  // as published last
  TimePoint mRecordingTold{};
  CLogFeed mLog;
  CMessageFeed mMessages;
  std::vector<SUnderWay> mSteps;
  bool mNews = true;  // that may have to be published
  TimePoint mPublished{};
  std::string mState;   // as published last, without its time
  Json::Value mTokens;  // as published last
  CPageServer mServer;
};
