// One thread collects, another one answers: a line of standard input is the path of a value.
#include <statuscollector/statuscollector.h>

#include <chrono>
#include <condition_variable>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace {

// The latest copy of the document. Whoever has one keeps it, also when the next one is there.
class Latest {
 public:
  void Set(std::shared_ptr<const QtSts::CStatus> status) {
    const std::lock_guard lock(mutex_);
    status_ = std::move(status);
    changed_.notify_all();
  }

  // Waits for the first one.
  std::shared_ptr<const QtSts::CStatus> Get() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return status_ != nullptr; });
    return status_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::shared_ptr<const QtSts::CStatus> status_;
};

// The document is written in the cycle and copied after it, all on this thread.
void Collect(const std::stop_token& stop, Latest& latest) {
  CStatusInterface collector;
  collector.InitDatabase(false);
  while (!stop.stop_requested()) {
    collector.QueryDatabase();
    latest.Set(QtSts::Copy(collector.m_Status));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

}  // namespace

int main() {
  Latest latest;
  const std::jthread collecting(Collect, std::ref(latest));
  for (std::string path; std::getline(std::cin, path);) {
    const std::shared_ptr<const QtSts::CStatus> status = latest.Get();
    const auto value = FindValue(*status, path);
    std::cout << path << ": " << (value ? value->Written() : "not reported") << std::endl;
  }
  return 0;  // the thread is asked to stop, and waited for
}
