#include "host/apart.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <variant>

namespace host {
namespace {

// "--interval" of "-i,--interval"
std::string_view LongName(const Argument& argument) {
  const std::string_view names = argument.Name;
  return names.substr(names.rfind(',') + 1);
}

std::string Word(const Argument& argument, const std::string& value) {
  return std::string(LongName(argument)) + "=" + value;
}

struct Writer {
  const Argument& Of;
  std::vector<std::string>* Words;

  void operator()(const std::string* text) const { Words->push_back(Word(Of, *text)); }
  void operator()(const int* number) const { Words->push_back(Word(Of, std::to_string(*number))); }
  void operator()(const bool* flag) const {
    if (*flag) {
      Words->push_back(Word(Of, "true"));
    }
  }
  void operator()(const std::vector<std::string>* texts) const {
    for (const std::string& text : *texts) {
      Words->push_back(Word(Of, text));
    }
  }
};

// Each returns whether `Value` is one that Writer writes.
struct Reader {
  std::string_view Value;

  bool operator()(std::string* text) const {
    *text = Value;
    return true;
  }
  bool operator()(int* number) const {
    const char* const end = Value.data() + Value.size();
    const auto [after, error] = std::from_chars(Value.data(), end, *number);
    return error == std::errc() && after == end;
  }
  bool operator()(bool* flag) const {
    *flag = true;
    return Value == "true";
  }
  bool operator()(std::vector<std::string>* texts) const {
    texts->emplace_back(Value);
    return true;
  }
};

}  // namespace

std::vector<std::string> WordsOf(const std::vector<Argument>& arguments) {
  std::vector<std::string> words;
  for (const Argument& argument : arguments) {
    std::visit(Writer{argument, &words}, argument.Value);
  }
  return words;
}

void TakeWords(std::span<const std::string> words, const std::vector<Argument>& arguments) {
  for (const std::string& word : words) {
    const std::size_t name = word.find('=');
    const auto argument =
        std::ranges::find(arguments, std::string_view(word).substr(0, name), &LongName);
    if (name == std::string::npos || argument == arguments.end() ||
        !std::visit(Reader{std::string_view(word).substr(name + 1)}, argument->Value)) {
      throw std::runtime_error(word + " is not for this program; start it by `statuscollector`");
    }
  }
}

void RunApart(const std::string& name, const std::string& package,
              const std::vector<Argument>& arguments) {
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
  const std::string path =
      (self.parent_path() / STATUS_PROGRAMS_FROM_HOST / name).lexically_normal().string();
  std::vector<std::string> words = WordsOf(arguments);
  words.insert(words.begin(), path);
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  execv(path.c_str(), argv.data());
  const int error = errno;
  throw std::runtime_error(path + " cannot be run: " + std::strerror(error) +
                           (error == ENOENT ? "; install " + package : ""));
}

}  // namespace host
