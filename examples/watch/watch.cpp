#include <collector/observer.h>
#include <collector/status_interface.h>

#include <cstring>
#include <iostream>

// Names the sources that do not answer, the unknown rows and the sensors that are
// refused.
class Watcher : public observe::Observer {
 public:
  void See(const observe::Event& event) override {
    if (const auto* answer = event.As<observe::Answers>()) {
      if (answer->Error != 0) {
        std::cout << answer->Question->Source << ": " << std::strerror(answer->Error) << '\n';
      }
    } else if (const auto* row = event.As<observe::RowBegins>()) {
      if (row->Entry < 0 && row->Key != nullptr) {
        std::cout << "unknown key: " << row->Key << '\n';
      }
    } else if (const auto* record = event.As<observe::Record>()) {
      if (record->What == observe::Ending::kPositionTaken) {
        std::cout << "number " << record->Number << " is taken\n";
      }
    }
  }
};

int main() {
  CStatusInterface collector;
  collector.InitDatabase(false);
  Watcher watcher;
  observe::SetObserver(&watcher);
  const int result = collector.QueryDatabase();
  observe::SetObserver(nullptr);
  return result;
}
