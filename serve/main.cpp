// The program behind `statuscollector serve`, which gives it the words.
#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "host/apart.h"
#include "host/failure_text.h"
#include "host/output.h"
#include "host/printable.h"
#include "host/serve.h"
#include "serve/collecting.h"
#include "serve/history.h"
#include "serve/history_store.h"
#include "serve/http_server.h"
#include "serve/service_manager.h"

namespace {

// For each of: the answers that have begun, the cycle that runs, and the last save.
constexpr std::chrono::seconds kMostForAnEnd{1};

std::vector<serve::ListenAddress> AddressesOf(const host::ServeOptions& options) {
  std::vector<serve::ListenAddress> addresses;
  for (const std::string& text : options.Listen) {
    addresses.push_back(serve::ParseListenAddress(text));
    if (!addresses.back().Address.IsLoopback() && !options.AllowRemote) {
      throw std::runtime_error("--listen: other machines may reach " + text +
                               "; if they are to, add --allow-remote");
    }
  }
  if (addresses.empty()) {
    addresses.push_back(serve::ParseListenAddress(host::kListen));
  }
  return addresses;
}

void SayWhatIsExposed(const std::vector<serve::ListenAddress>& addresses) {
  for (const serve::ListenAddress& address : addresses) {
    if (!address.Address.IsLoopback()) {
      std::fprintf(stderr,
                   "statuscollector: whoever reaches %s can read all of the document, its rows and "
                   "findings, without password and encryption; nobody can change anything\n",
                   address.Text.c_str());
    }
  }
}

// Where the history is kept; "" for nowhere. A service is given the folder by its environment,
// which may name several.
std::string StateFolder(const host::ServeOptions& options) {
  const char* const given = std::getenv("STATE_DIRECTORY");
  if (!options.State.empty() || given == nullptr) {
    return options.State;
  }
  const std::string folders = given;
  return folders.substr(0, folders.find(':'));
}

// Readable when the program is to end.
int MakeSignalDescriptor() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    sigaddset(&signals, number);
  }
  sigprocmask(SIG_BLOCK, &signals, nullptr);  // for all threads: none runs yet
  const int descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor == -1) {
    throw std::system_error(errno, std::generic_category(), "signalfd");
  }
  return descriptor;
}

// The service manager sees that requests are answered, not what a cycle does: one that hangs is to
// be shown by a program that goes on, and the next one would hang likewise.
void Serve(int signals, serve::ServiceManager* manager, serve::Collecting* collecting,
           serve::HttpServer* server) {
  for (;;) {
    manager->Feed();
    std::vector<pollfd> descriptors = {
        {.fd = signals, .events = POLLIN, .revents = 0},
        {.fd = collecting->Descriptor(), .events = POLLIN, .revents = 0},
    };
    server->AddDescriptors(&descriptors);
    const std::chrono::milliseconds wait = manager->MostWait(server->MostWait());
    poll(descriptors.data(), descriptors.size(), static_cast<int>(wait.count()));
    if (descriptors.front().revents != 0) {
      return;
    }
    server->Set(collecting->Look());
    server->Run();
  }
}

int Run(int argc, char** argv) {
  host::ServeOptions options;
  host::TakeWords(std::vector<std::string>(argv + 1, argv + argc), host::ServeArguments(&options));
  const std::vector<serve::ListenAddress> addresses = AddressesOf(options);
  tzset();  // so that the thread of the cycles finds what the C library keeps of it
  const int signals = MakeSignalDescriptor();
  const host::StandardOutput output;  // what the probes print goes to standard error
  const std::chrono::seconds interval(options.Interval);
  serve::History history(interval, serve::BootOfController());
  serve::HttpServer server(addresses, options.Hosts, interval, history);
  std::optional<serve::HistoryStore> store;
  if (const std::string folder = StateFolder(options); !folder.empty()) {
    store.emplace(folder, interval, &history);
  }
  SayWhatIsExposed(addresses);
  serve::Collecting collecting(interval, output, &history);
  serve::ServiceManager manager;
  manager.Notify("READY=1");
  Serve(signals, &manager, &collecting, &server);
  manager.Notify("STOPPING=1");
  server.Stop(kMostForAnEnd);
  const bool collected = collecting.Stop(kMostForAnEnd);
  const bool saved = !store || store->Stop(kMostForAnEnd);
  if (saved) {
    store.reset();
  } else {
    std::fputs(
        "statuscollector: the history is not saved: the disk does not answer; what is newer than "
        "the file is lost\n",
        stderr);
  }
  if (!collected || !saved) {
    _exit(host::kAllWell);  // what hangs goes with the process alone
  }
  return host::kAllWell;
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "statuscollector: serve: %s\n",
                 host::Printable(host::InWords(error)).c_str());
    return host::kTrouble;
  }
}
