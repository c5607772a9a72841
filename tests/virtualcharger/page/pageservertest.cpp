#include <fmt/format.h>
#include <gmock/gmock.h>

#include <deque>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/virtualcharger/page/browser.h"
#include "tests/virtualcharger/page/pageevents.h"
#include "virtualcharger/page/pagefiles.h"
#include "virtualcharger/page/pageserver.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using EWaiting = CPageServer::EWaiting;

class APageServer : public ::testing::Test {
 protected:
  std::string Token() { return mServer->Url().substr(mServer->Url().find('#') + 1); }

  // A client that has its greeting under way.
  std::unique_ptr<CBrowser> Greeted(const std::string& greeting = "greeting") {
    auto browser = std::make_unique<CBrowser>(mServer->Port());
    browser->SayHello(Token());
    mServer->Greet(mEvents.Next().client, greeting);
    return browser;
  }

  // The status of the answer to a request, whose $ is the server's port.
  std::string StatusOf(std::string request) {
    const auto port = std::to_string(mServer->Port());
    for (auto at = request.find('$'); at != std::string::npos; at = request.find('$')) {
      request.replace(at, 1, port);
    }
    CRawConnection connection(mServer->Port());
    connection.Say(request);
    const auto answer = connection.HearLine();
    return answer.substr(0, answer.find(' ', 9));
  }

  void WaitForClients(std::size_t count) {
    while (mServer->Clients() != count) std::this_thread::yield();
  }

  CPageEvents mEvents;
  std::unique_ptr<CPageServer> mServer =
      std::make_unique<CPageServer>(CPageServer::SSettings{0, {}}, mEvents);
};

const std::string kUpgrade =
    "Connection: upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
    "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n";

TEST_F(APageServer, AnswersItsOwnPageAndNobodyElse) {
  const std::string own = "Host: 127.0.0.1:$\r\n";
  const std::string origin = "Origin: http://127.0.0.1:$\r\n";
  const struct {
    std::string request;
    std::string status;
  } cases[] = {
      {"GET / HTTP/1.1\r\n" + own, "200"},
      {"GET / HTTP/1.1\r\nHost: localhost:$\r\n", "200"},
      {"GET / HTTP/1.1\r\nHost: localhost\r\n", "403"},
      {"GET / HTTP/1.1\r\nHost: rebound.example:$\r\n", "403"},
      {"GET / HTTP/1.1\r\n" + own + own, "403"},
      {"GET / HTTP/1.0\r\n", "403"},
      {"GET /nothing HTTP/1.1\r\n" + own, "404"},
      {"GET /../index.html HTTP/1.1\r\n" + own, "404"},
      {"GET http://127.0.0.1/ HTTP/1.1\r\n" + own, "404"},
      {"HEAD / HTTP/1.1\r\n" + own, "405"},
      {"POST / HTTP/1.1\r\nContent-Length: 5\r\n" + own, "405"},
      {"GET /ws HTTP/1.1\r\n" + own + origin, "426"},
      {"GET /ws HTTP/1.1\r\n" + own + kUpgrade, "403"},
      {"GET /ws HTTP/1.1\r\n" + own + kUpgrade + "Origin: null\r\n", "403"},
      {"GET /ws HTTP/1.1\r\n" + own + kUpgrade + "Origin: http://localhost:$\r\n", "403"},
      {"GET /ws HTTP/1.1\r\n" + own + kUpgrade + origin + origin, "403"},
      {"GET / HTTP/1.1\r\n" + own + "Long: " + std::string(5000, 'x') + "\r\n", "431"},
      {"nonsense\r\n", "400"},
  };
  for (const auto& [request, status] : cases) {
    EXPECT_EQ(StatusOf(request + "\r\n"), "HTTP/1.1 " + status) << request;
  }
}

TEST_F(APageServer, ServesEveryFileWithItsTypeAndForItselfOnly) {
  for (const auto& file : kPageFiles) {
    CRawConnection connection(mServer->Port());
    connection.Say(
        fmt::format("GET /{} HTTP/1.1\r\nHost: localhost:{}\r\n\r\n", file.name, mServer->Port()));
    const auto answer = connection.Hear();
    const auto type = fmt::format("Content-Type: {}\r\n", ContentType(file));
    EXPECT_THAT(
        answer,
        AllOf(HasSubstr(type), HasSubstr("\r\nContent-Security-Policy: default-src 'self';"),
              HasSubstr(file.name == "lamp.html" ? "; frame-ancestors http://127.0.0.1:* "
                                                   "http://localhost:*\r\n"
                                                 : "; frame-ancestors 'none'\r\n"),
              HasSubstr("\r\nX-Content-Type-Options: nosniff\r\n"),
              HasSubstr("\r\nReferrer-Policy: no-referrer\r\n"),
              HasSubstr("\r\nCache-Control: no-store\r\n")));
    EXPECT_EQ(answer.substr(answer.find("\r\n\r\n") + 4), file.content) << file.name;
    EXPECT_NE(ContentType(file), "application/octet-stream") << file.name;
  }
  EXPECT_EQ(FindPageFile("/"), FindPageFile("/index.html"));
  EXPECT_EQ(FindPageFile("/lamp"), FindPageFile("/lamp.html"));
}

TEST_F(APageServer, GreetsAClientAndThenTellsItEverythingThatIsPublishedAfterwards) {
  std::vector<std::thread> pages;
  std::size_t ended = 0;
  std::mutex mutex;
  for (int page = 0; page < 8; ++page) {
    pages.emplace_back([&] {
      CBrowser browser(mServer->Port());
      browser.SayHello();
      const int first = std::stoi(browser.Hear());
      for (int next = first + 1; next < first + 200; ++next) {
        EXPECT_EQ(browser.Hear(), std::to_string(next));
      }
      const std::lock_guard lock(mutex);
      ++ended;
    });
  }
  int published = 0;
  const auto publish = [&] { mServer->Publish(std::to_string(++published)); };
  for (int greeted = 0; greeted < 8; ++greeted) {
    publish();
    mServer->Greet(mEvents.Next().client, std::to_string(published));
  }
  for (int more = 0; more < 200; ++more) publish();
  for (auto& page : pages) page.join();
  EXPECT_EQ(ended, 8U);
}

TEST_F(APageServer, LetsAClientWithoutTheTokenLookButNotWrite) {
  for (const auto& token : {std::string(), Token().substr(1), Token() + '0', "x" + Token()}) {
    CBrowser browser(mServer->Port());
    browser.SayHello(token);
    const auto hello = mEvents.Next();
    EXPECT_FALSE(hello.mayWrite) << token;
    mServer->Greet(hello.client, "greeting");
    EXPECT_EQ(browser.Hear(), "greeting");
    mServer->PublishToWriters("how to steer the others");
    browser.Say(R"({"type":"step","id":7,"line":"kill daemon"})");
    EXPECT_THAT(browser.Hear(), AllOf(HasSubstr(R"("id":7)"), HasSubstr(R"("ok":false)"),
                                      HasSubstr("open the whole URL")));
  }
  // Nothing of all this came through before the first word of a client that may.
  const auto browser = Greeted();
  browser->Say(R"({"type":"step"})");
  const auto step = mEvents.Next();
  EXPECT_EQ(step.type, "step");
  mServer->PublishToWriters("how to steer the others");
  mServer->Send(step.client, "done");
  EXPECT_EQ(browser->Hear(), "greeting");
  EXPECT_EQ(browser->Hear(), "how to steer the others");
  EXPECT_EQ(browser->Hear(), "done");
}

TEST_F(APageServer, TellsAClientThatBreaksTheRulesWhy) {
  const std::string hello = R"({"type":"hello"})";
  const struct {
    std::vector<std::string> messages;
    bool binary;
    unsigned code;
  } cases[] = {
      {{R"({"type":"step"})"}, false, 1008},
      {{hello, hello}, false, 1008},
      {{"[]"}, false, 1008},
      {{R"({"type":"hello")"}, false, 1008},
      {{std::string(1000, '[')}, false, 1008},
      {{hello}, true, 1008},
      {{"\xff"}, false, 1007},
      {{std::string(CPageServer::kLargestMessage + 1, ' ')}, false, 1009},
  };
  for (const auto& [messages, binary, code] : cases) {
    CBrowser browser(mServer->Port());
    browser.Stream().binary(binary);
    for (const auto& message : messages) browser.Say(message);
    EXPECT_EQ(browser.HearClose(), code) << messages.front().substr(0, 40);
  }
  WaitForClients(0);
}

TEST_F(APageServer, HasRoomForAnotherClientWhenOneHasLeft) {
  std::deque<CBrowser> browsers;
  while (browsers.size() < CPageServer::kMostClients) browsers.emplace_back(mServer->Port());
  const auto upgrade =
      "GET /ws HTTP/1.1\r\nHost: 127.0.0.1:$\r\nOrigin: http://127.0.0.1:$\r\n" + kUpgrade + "\r\n";
  EXPECT_EQ(StatusOf(upgrade), "HTTP/1.1 503");
  EXPECT_EQ(StatusOf("GET / HTTP/1.1\r\nHost: localhost:$\r\n\r\n"), "HTTP/1.1 503");
  browsers.pop_back();
  WaitForClients(CPageServer::kMostClients - 1);
  EXPECT_NO_THROW(browsers.emplace_back(mServer->Port()));
}

TEST_F(APageServer, CutsOffWhoDoesNotReadAndNobodyElse) {
  const auto idle = Greeted();
  const auto reader = Greeted();
  EXPECT_EQ(reader->Hear(), "greeting");
  for (int count = 0; mServer->Clients() == 2; ++count) {
    ASSERT_LT(count, 200) << "far more waits than a queue and the kernel's buffers hold";
    const auto text = std::to_string(count) + std::string(256UL * 1024, ' ');
    mServer->Publish(text);
    ASSERT_EQ(reader->Hear(), text);
  }
  mServer->Publish("afterwards");
  EXPECT_EQ(reader->Hear(), "afterwards");
}

TEST_F(APageServer, SparesASlowReaderWhatANewerMessageReplaces) {
  const auto slow = Greeted();
  const auto reader = Greeted();
  EXPECT_EQ(reader->Hear(), "greeting");
  const std::string padding(256UL * 1024, ' ');
  constexpr int kCount = 100;
  for (int count = 0; count < kCount; ++count) {
    const auto text = std::to_string(count) + padding;
    mServer->Publish(text, EWaiting::Replace);
    ASSERT_EQ(reader->Hear(), text);
  }
  EXPECT_EQ(mServer->Clients(), 2U);
  EXPECT_EQ(slow->Hear(), "greeting");
  int heard = 0;
  for (int last = -1; last != kCount - 1; ++heard) {
    const int next = std::stoi(slow->Hear());
    EXPECT_GT(next, last);
    last = next;
  }
  EXPECT_LT(heard, kCount);
}

TEST_F(APageServer, EndsAtOnceThoughAClientDoesNotRead) {
  const auto idle = Greeted(std::string(16UL * 1024 * 1024, ' '));
  const CRawConnection silent(mServer->Port());
  const auto begin = std::chrono::steady_clock::now();
  mServer.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, CPageServer::kHandshakeLimit);
}

TEST_F(APageServer, LivesOnWhateverBytesCome) {
  std::mt19937 random(1);
  const std::string prefixes[] = {
      "", "GET ", "GET / HTTP/1.1\r\n",
      fmt::format("GET /ws HTTP/1.1\r\nHost: 127.0.0.1:{0}\r\nOrigin: http://127.0.0.1:{0}\r\n{1}"
                  "\r\n",
                  mServer->Port(), kUpgrade)};
  for (int round = 0; round < 200; ++round) {
    std::string bytes = prefixes[random() % std::size(prefixes)];
    for (auto left = random() % 6000; left > 0; --left) bytes += static_cast<char>(random());
    CRawConnection connection(mServer->Port());
    connection.Say(bytes);
  }
  WaitForClients(0);
  EXPECT_EQ(StatusOf("GET / HTTP/1.1\r\nHost: localhost:$\r\n\r\n"), "HTTP/1.1 200");
}

TEST_F(APageServer, NamesAPortThatIsTakenAndTakesTheNextWhereNoneIsAskedFor) {
  const auto port = mServer->Port();
  try {
    const CPageServer second({port, {}}, mEvents);
    FAIL() << "two servers listen on one port";
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), AllOf(HasSubstr(std::to_string(port)), HasSubstr("--port")));
  }
  const CPageServer first({std::nullopt, {}}, mEvents);
  const CPageServer next({std::nullopt, {}}, mEvents);
  EXPECT_GE(first.Port(), CPageServer::kUsualPort);
  EXPECT_GT(next.Port(), first.Port());
  EXPECT_EQ(next.Url().find(fmt::format("http://127.0.0.1:{}/#", next.Port())), 0U);
  EXPECT_NE(first.Url().substr(first.Url().find('#')), next.Url().substr(next.Url().find('#')));
}

}  // namespace
