// Changes archives so that they stay archives: after any change headers have their checksums, and
// the end is there. Without this hardly any change gets past the first header.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace {

constexpr std::size_t kBlock = 512;
constexpr std::size_t kEnd = 2 * kBlock;

// Fields of a header: where they stand, and how long they are.
constexpr std::size_t kName = 0;
constexpr std::size_t kNameLength = 100;
constexpr std::size_t kMode = 100;
constexpr std::size_t kSize = 124;
constexpr std::size_t kSizeLength = 12;
constexpr std::size_t kChecksum = 148;
constexpr std::size_t kChecksumLength = 8;
constexpr std::size_t kType = 156;
constexpr std::size_t kMagic = 257;

constexpr const char* kNames[] = {"capture/capture.json",
                                  "capture/document.xml",
                                  "capture/rows.tsv",
                                  "capture/interfaces",
                                  "capture/faults",
                                  "capture/uptime",
                                  "capture/devices/travex",
                                  "capture/removed",
                                  "capture/base",
                                  "capture/root/etc/motto",
                                  "capture/steps/01/removed",
                                  "capture/steps/01/rows.tsv",
                                  "capture/steps/01/root/x",
                                  "capture/steps/02/faults",
                                  "capture/steps/01/interfaces",
                                  "capture/../x",
                                  "/capture/x",
                                  "capture/root/../../x"};
constexpr const char* kTexts[] = {
    "{\"format\":1,\"zone\":\"UTC0\",\"cycles\":[{\"storage\":{\"blocks\":1},\"notes\":[{\"field\":"
    "\"*\"}]}]}",
    "GUID\tabc\nA\\t\t\\N\n\\x00\t\\xFF\n",
    "interface eth0\n  mac 00:1A:2B:3C:4D:5E\n  link up\n  address 10.0.0.1/24 broadcast "
    "10.0.0.255 "
    "label eth0:1\n  address fe80::1/64\n  address 10.0.0.2/32 peer 10.0.0.3\n",
    "/a open 5\n/a read 5 after 3\n/b status 13\n/c type fifo\neth0 hardware-address 19\n"
    "/dev/shm/status.db query 1\n",
    "0x8004DA0C -5\nopen 13\n",
    "root/etc/motto\nrows.tsv\ndevices/travex\nfaults\n",
    "100\n"};
constexpr char kTypes[] = {'0', '0', '0', '5', '1', '2', '3', '4', '6', '7',
                           'L', 'K', 'x', 'g', 'S', 'V', 'M', 'D', '\0'};

std::size_t SizeOf(const std::uint8_t* header) {
  std::size_t size = 0;
  for (std::size_t at = kSize; at < kSize + kSizeLength - 1; ++at) {
    if (header[at] >= '0' && header[at] <= '7') {
      size = size * 8 + (header[at] - std::size_t{'0'});
    }
  }
  return size;
}

void SetChecksum(std::uint8_t* header) {
  std::memset(header + kChecksum, ' ', kChecksumLength);
  unsigned sum = 0;
  std::for_each(header, header + kBlock, [&sum](std::uint8_t byte) { sum += byte; });
  char text[kChecksumLength];
  std::snprintf(text, sizeof text, "%06o", sum);
  std::memcpy(header + kChecksum, text, kChecksumLength - 1);
}

std::string Entry(std::mt19937& random) {
  const auto any = [&random](const auto& list) { return list[random() % std::size(list)]; };
  const std::string contents = any(kTexts);
  std::string entry(kBlock, '\0');
  std::snprintf(entry.data() + kName, kNameLength, "%s", any(kNames));
  std::snprintf(entry.data() + kMode, 8, "%07o", 0644U);
  std::snprintf(entry.data() + kSize, kSizeLength, "%011zo", contents.size());
  std::memcpy(entry.data() + kMagic, "ustar\00000", 8);
  entry[kType] = random() % 4 == 0 ? any(kTypes) : '0';
  entry += contents;
  entry.resize((entry.size() + kBlock - 1) / kBlock * kBlock);
  return entry;
}

// Headers where the ones before them say they are.
void Repair(std::string* tar) {
  tar->resize((tar->size() + kBlock - 1) / kBlock * kBlock);
  for (std::size_t at = 0; at + kBlock <= tar->size();) {
    auto* const header = reinterpret_cast<std::uint8_t*>(tar->data() + at);
    const bool empty = std::all_of(header, header + kBlock, [](auto byte) { return byte == 0; });
    if (!empty) {
      SetChecksum(header);
    }
    at += kBlock + (SizeOf(header) + kBlock - 1) / kBlock * kBlock;
  }
  tar->append(kEnd, '\0');
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned int seed) {
  std::mt19937 random(seed);
  const std::size_t changed = LLVMFuzzerMutate(data, size, most);
  const bool compressed = changed >= 4 && data[0] == 0x28 && data[1] == 0xB5;
  if (compressed || random() % 8 == 0) {
    return changed;
  }
  std::string tar(reinterpret_cast<const char*>(data), changed);
  while (tar.size() >= kEnd && tar.find_first_not_of('\0', tar.size() - kBlock) == tar.npos) {
    tar.resize(tar.size() - kBlock);
  }
  if (random() % 2 == 0) {
    const std::size_t blocks = tar.size() / kBlock;
    tar.insert(random() % (blocks + 1) * kBlock, Entry(random));
  }
  Repair(&tar);
  if (tar.size() > most) {
    return changed;
  }
  std::memcpy(data, tar.data(), tar.size());
  return tar.size();
}
