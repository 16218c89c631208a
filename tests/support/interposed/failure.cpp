#include "tests/support/interposed/failure.h"

#include <cerrno>
#include <cstddef>

namespace interposed {
namespace {

struct KindName {
  Call Kind;
  const char* Name;
};

constexpr KindName kNames[] = {
    {Call::kMemory, "Memory"},
    {Call::kOpen, "Open"},
    {Call::kRead, "Read"},
    {Call::kWrite, "Write"},
    {Call::kIoctl, "Ioctl"},
    {Call::kSocket, "Socket"},
    {Call::kGetifaddrs, "Getifaddrs"},
    {Call::kGetnameinfo, "Getnameinfo"},
    {Call::kFileStatus, "FileStatus"},
    {Call::kStatfs, "Statfs"},
    {Call::kSysinfo, "Sysinfo"},
    {Call::kSqlOpen, "SqlOpen"},
    {Call::kSqlSet, "SqlSet"},
    {Call::kSqlPrepare, "SqlPrepare"},
    {Call::kSqlStep, "SqlStep"},
    {Call::kSqlReset, "SqlReset"},
    {Call::kSqlFinalize, "SqlFinalize"},
    {Call::kSqlClose, "SqlClose"},
};
constexpr std::size_t kKinds = static_cast<std::size_t>(Call::kSqlClose) + 1;
static_assert(std::size(kNames) == kKinds, "every kind has its name");

struct Plan {
  bool Armed;
  Extent Reach;
  unsigned long Nth;
  int Error;
  unsigned long Calls;  // so far
};

// Plain values: the allocator asks before any constructor has run.
Plan g_plans[kKinds];
int g_armed = 0;
bool g_struck = false;

// The names of the functions that were called meanwhile, without memory to note them.
constexpr std::size_t kMostFunctions = 64;
const char* g_called[kMostFunctions];

Plan& PlanOf(Call call) { return g_plans[static_cast<std::size_t>(call)]; }

void Arm(Call call, unsigned long nth, Extent extent, int error) {
  Plan& plan = PlanOf(call);
  g_armed += plan.Armed ? 0 : 1;
  g_struck = false;
  plan = {true, extent, nth, error, 0};
}

void Disarm(Plan* plan) {
  g_armed -= plan->Armed ? 1 : 0;
  plan->Armed = false;
}

void NoteCall(const char* function) {
  for (const char*& called : g_called) {
    if (called == nullptr || called == function) {
      called = function;
      return;
    }
  }
}

}  // namespace

const char* NameOf(Call call) {
  for (const KindName& row : kNames) {
    if (row.Kind == call) {
      return row.Name;
    }
  }
  return "unknown";
}

Failure::Failure(Call call, unsigned long nth, Extent extent, int error) : call_(call) {
  Arm(call, nth, extent, error);
}

Failure::~Failure() { Disarm(&PlanOf(call_)); }

void FailNext(Call call, int error) { Arm(call, 1, Extent::kOnce, error); }

void FailNone() {
  for (Plan& plan : g_plans) {
    Disarm(&plan);
  }
}

bool Struck() { return g_struck; }

std::set<std::string> Called() {
  std::set<std::string> names;
  for (const char* const* called = g_called; *called != nullptr; ++called) {
    names.insert(*called);
  }
  return names;
}

int ErrorOf(Call call, int usual_error, const char* function) {
  if (g_armed == 0) {
    return 0;
  }
  NoteCall(function);
  Plan& plan = PlanOf(call);
  if (!plan.Armed) {
    return 0;
  }
  ++plan.Calls;
  const bool fails = plan.Nth != 0 && (plan.Reach == Extent::kOnce ? plan.Calls == plan.Nth
                                                                   : plan.Calls >= plan.Nth);
  if (!fails) {
    return 0;
  }
  g_struck = true;
  return plan.Error != 0 ? plan.Error : usual_error;
}

bool Fails(Call call, int usual_error, const char* function) {
  const int error = ErrorOf(call, usual_error, function);
  if (error != 0) {
    errno = error;
  }
  return error != 0;
}

}  // namespace interposed
