#include "virtualcharger/desk/rundesk.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>

#include "platform/kvconfig/kvconfig.h"
#include "virtualcharger/desk/desk.h"
#include "virtualcharger/desk/pageopener.h"
#include "virtualcharger/page/deskregistry.h"
#include "virtualcharger/scenario/exitstatus.h"
#include "virtualcharger/scenario/names.h"

namespace {

SRunningCharger Entry(const std::string& name, const CDesk& desk, CPrivateRoot& root) {
  SRunningCharger charger;
  charger.name = name;
  charger.pid = getpid();
  charger.port = desk.Port();
  charger.url = desk.Url();
  charger.store = root.Store();
  charger.sockets = root.Sockets();
  return charger;
}

void Explain(const std::string& name, const CDesk& desk, const std::string& remedy) {
  if (!remedy.empty()) fmt::print("No virtual hardware: {}\n", remedy);
  fmt::print(
      "The charger \"{}\" runs: {}\n"
      "Ctrl-C ends it. A story without a page: ./run --story\n",
      name, desk.Url());
  std::fflush(stdout);
}

void Live(const SRunOptions& options, CBench& bench, CInterrupt& interrupt) {
  auto registry = options.name.empty() ? CDeskRegistry() : CDeskRegistry(options.name);
  std::optional<CPageOpener> opener;
  if (options.openPage) opener.emplace();
  const auto inbox = std::make_shared<CInbox>();
  // Held by its own right: the hardware may call as long as it lives.
  bench.Hardware().SetListener([inbox] { inbox->Wake(); });
  const auto remedy = bench.StartHardware().value_or("");
  const CLibrary library(std::filesystem::path(ThisProgram()).parent_path());
  CDesk desk({registry.Name(), remedy, options.port}, bench, interrupt, library, registry, inbox);
  registry.Announce(Entry(registry.Name(), desk, bench.Processes().Root()));
  Explain(registry.Name(), desk, remedy);
  if (opener) opener->Open(desk.Url());
  desk.Run();
}

}  // namespace

int RunDesk(const SRunOptions& options) {
  if (access(options.daemon.c_str(), X_OK) != 0) {
    fmt::print(stderr, "virtual-charger: no daemon at {}; build it with ./run --build\n",
               options.daemon);
    return Status(EExit::Usage);
  }
  ThisProgram();
  CInterrupt interrupt;
  try {
    CBench bench({std::filesystem::absolute(options.daemon), options.showLog}, options.hardware);
    if (options.keepRoot) {
      bench.Processes().Root().Keep();
      fmt::print("the run's folder: {}\n", bench.Processes().Root().Path());
    }
    Live(options, bench, interrupt);
  } catch (const CInterrupted& impatient) {
    return kSignalled + impatient.Signal();
  } catch (const std::exception& failure) {
    fmt::print(stderr, "virtual-charger: {}\n", failure.what());
    return Status(EExit::Failed);
  }
  return Status(EExit::AsExpected);
}
