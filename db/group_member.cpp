#include "db/group_member.h"

#include <grp.h>
#include <pwd.h>

#include <cerrno>
#include <string_view>
#include <vector>

namespace sqlitedb {

namespace {

constexpr std::size_t kLongestEntry = 1 << 20;

// An entry of the user or the group database; its texts live as long as this object.
template <class Entry>
class SystemEntry {
 public:
  template <class Id>
  SystemEntry(int (*get)(Id, Entry*, char*, std::size_t, Entry**), Id id) {
    int code = ERANGE;
    for (std::size_t size = 1024; code == ERANGE && size <= kLongestEntry; size *= 4) {
      texts_.resize(size);
      code = get(id, &entry_, texts_.data(), size, &found_);
    }
    found_ = code == 0 ? found_ : nullptr;
  }
  SystemEntry(const SystemEntry&) = delete;
  SystemEntry& operator=(const SystemEntry&) = delete;

  explicit operator bool() const noexcept { return found_ != nullptr; }
  const Entry* operator->() const noexcept { return found_; }

 private:
  Entry entry_{};
  Entry* found_ = nullptr;
  std::vector<char> texts_;
};

bool Lists(const group& entry, std::string_view user) {
  for (char* const* member = entry.gr_mem; *member != nullptr; ++member) {
    if (*member == user) {
      return true;
    }
  }
  return false;
}

bool ListsOthers(const group& entry, std::string_view user) {
  for (char* const* member = entry.gr_mem; *member != nullptr; ++member) {
    if (*member != user) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool IsMember(uid_t user, gid_t group_id) {
  const SystemEntry<passwd> entry(getpwuid_r, user);
  if (!entry) {
    return false;
  }
  if (entry->pw_gid == group_id) {
    return true;
  }
  const SystemEntry<group> members(getgrgid_r, group_id);
  return members && Lists(*members.operator->(), entry->pw_name);
}

bool IsOwnGroup(uid_t user, gid_t group_id) {
  const SystemEntry<passwd> entry(getpwuid_r, user);
  if (!entry || entry->pw_gid != group_id) {
    return false;
  }
  const SystemEntry<group> members(getgrgid_r, group_id);
  return members && std::string_view(members->gr_name) == entry->pw_name &&
         !ListsOthers(*members.operator->(), entry->pw_name);
}

}  // namespace sqlitedb
