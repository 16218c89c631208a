// Opens the status database, runs a cycle and writes what its observer saw it ask of the system
// into a file, in lines that a trace of its system calls can be brought to as well. Without a file
// there is no observer. Calls getppid before and afterwards, which marks both in a trace.
//
//   observe_accesses [FILE]
#include <unistd.h>

#include <fstream>

#include "collector/observer.h"
#include "collector/status_interface.h"

namespace {

using observe::Call;

// As openat gets it.
std::string NameOpened(const observe::Asks& question) {
  const std::string path = question.Source;
  return question.Descriptor == -1 ? path : path.substr(path.rfind('/') + 1);
}

class AccessLog : public observe::Observer {
 public:
  explicit AccessLog(const char* file) : file_(file) {}

  void See(const observe::Event& event) override {
    if (const auto* answer = event.As<observe::Answers>()) {
      Write(*answer->Question, answer->Result);
    }
  }

 private:
  void Write(const observe::Asks& question, long long result) {
    switch (question.What) {
      case Call::kOpen:
        lines_ += "open " + NameOpened(question);
        break;
      case Call::kRead:
        lines_ += "read " + std::to_string(question.Descriptor);
        break;
      case Call::kFileStatus:
        lines_ += "status " + std::to_string(question.Descriptor);
        break;
      case Call::kPathStatus:
        lines_ += "status " + std::string(question.Source);
        break;
      case Call::kRequest:
      case Call::kHardwareAddress:
        lines_ += "request " + std::to_string(question.Descriptor);
        break;
      case Call::kLinkTarget:
        lines_ += "link " + std::to_string(question.Descriptor);
        break;
      case Call::kStorage:
        lines_ += "storage " + std::string(question.Source);
        break;
      case Call::kSystem:
        lines_ += "system";
        break;
      case Call::kSocket:
        lines_ += "socket";
        break;
      default:
        return;  // the C library's own, if they are system calls at all
    }
    lines_ += " = " + std::to_string(result) + '\n';
  }

 public:
  void Finish() { file_ << lines_ << std::flush; }

 private:
  std::ofstream file_;
  std::string lines_;
};

}  // namespace

int main(int argc, char** argv) {
  AccessLog log(argc > 1 ? argv[1] : "/dev/null");
  observe::SetObserver(argc > 1 ? &log : nullptr);
  getppid();
  CStatusInterface collector;
  collector.InitDatabase(false);
  const int result = collector.QueryDatabase();
  getppid();
  observe::SetObserver(nullptr);
  log.Finish();
  return result;
}
