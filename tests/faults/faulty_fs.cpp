// A file system with faults: passes all calls on to a backing folder, but for what it is told to do wrong.
//
//   faulty_fs BACKING MOUNT SOCKET [SECONDS]
//
// stays in the foreground until it is unmounted. The kernel may keep names and attributes for SECONDS, as the
// clients of network shares do; 0 if not given.
// Each connection to SOCKET takes one command, its words separated by tabs, and is answered with text.
// PATH is below the mount and begins with "/"; ERRNO is a number of this system; KIND is one of `kKinds`.
//
// - backing FOLDER: other content from now on; files that are open keep theirs
// - times N: keeps write times in whole multiples of N seconds, rounded down; 0: as given
// - apart 0|1: gives names back with accents apart; finds them by either form
// - delay MILLISECONDS: every call takes so much longer
// - down ERRNO MILLISECONDS PATH: every call at PATH and below fails for that time; 0: until "up"
// - up: ends that
// - fail KIND N TIMES ERRNO PATH: of the calls from now on whose path has PATH in it, the N-th and the next
//   ones
// - room BYTES: what can still be written before the disk is full; -1: no end
// - bad PATH OFFSET: a sector that cannot be read
// - cut PATH N ERRNO: the listing of that folder fails after N entries
// - lose 0|1: writes are accepted and lost; flush and fsync of these files say so
// - when KIND N COMMAND...: carries out COMMAND right before the N-th call of the kind from now
// - reset: no more faults, counts begin anew; the backing folder stays
// - counts: answers a line "KIND NUMBER" for each kind
// - created: answers the paths of the files that were created
#define FUSE_USE_VERSION 312
#include <dirent.h>
#include <fcntl.h>
#include <fuse.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using TClock = std::chrono::steady_clock;
using TWords = std::vector<std::string>;

constexpr std::array<const char*, 17> kKinds = {
    "getattr", "opendir", "readdir", "open",  "create", "read",     "write",   "flush", "fsync",
    "release", "rename",  "unlink",  "mkdir", "rmdir",  "truncate", "utimens", "chmod"};

struct TFault {
    std::string kind;
    long first = 0;
    long times = 0;
    int error = 0;
    std::string part;
};

struct TTrigger {
    std::string kind;
    long first = 0;
    std::string part;
    TWords command;
};

// What can be told by commands; `reset` makes it afresh.
struct TFaults {
    long timeStep = 0;
    bool apart = false;
    std::chrono::milliseconds delay{0};
    int downError = 0;
    TClock::time_point downUntil;
    std::string downPath;
    std::vector<TFault> faults;
    std::vector<TTrigger> triggers;
    long long room = -1;
    std::map<std::string, off_t> badSectors;
    std::map<std::string, std::pair<std::size_t, int>> cuts;
    bool lose = false;
    std::set<ino_t> lost;
    std::map<std::string, long> counts;
    std::string created;
};

// Calls come on many threads.
std::mutex lock;
TFaults told;
std::string backing;
std::string controlSocket;
double keptSeconds = 0;  // by the kernel: names and attributes

// Latin letters with an accent, from U+00C0 on, each as letter and combining mark; '.' has none.
constexpr std::string_view kLetters = "AAAAAA.CEEEEIIII.NOOOOO..UUUUY..aaaaaa.ceeeeiiii.nooooo..uuuuy.y";
constexpr std::string_view kMarks = "01238a.r01280128.301238..01281..01238a.r01280128.301238..01281.8";

std::string Utf8(unsigned code) {
    return {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
}

unsigned CombiningMark(char mark) {
    return mark == 'a' ? 0x30A : mark == 'r' ? 0x327 : 0x300U + static_cast<unsigned>(mark - '0');
}

std::string Replaced(std::string text, bool compose) {
    for (std::size_t index = 0; index < kLetters.size(); ++index) {
        if (kLetters[index] == '.') {
            continue;
        }
        const std::string one = Utf8(0xC0 + static_cast<unsigned>(index));
        const std::string two = kLetters[index] + Utf8(CombiningMark(kMarks[index]));
        const std::string& from = compose ? two : one;
        const std::string& to = compose ? one : two;
        for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
            text.replace(at, from.size(), to);
        }
    }
    return text;
}

std::string Real(const char* path) {
    const std::lock_guard guard(lock);
    return backing + (told.apart ? Replaced(path, true) : path);
}

std::string Tell(const TWords& words);

void TellLater(std::chrono::milliseconds delay, const TWords& command) {
    std::thread([delay, command] {
        std::this_thread::sleep_for(delay);
        const std::lock_guard guard(lock);
        Tell(command);
    }).detach();
}

bool IsBelow(std::string_view path, std::string_view top) {
    return top == "/" || path == top ||
           (path.size() > top.size() && path.substr(0, top.size()) == top && path[top.size()] == '/');
}

// Every call comes through here first: 0, or the error it ends with.
int Enter(const char* kind, const char* pathOrNull) {
    const std::string path = pathOrNull != nullptr ? pathOrNull : "/";
    std::unique_lock guard(lock);
    ++told.counts[kind];
    std::vector<TWords> due;
    std::erase_if(told.triggers, [&](TTrigger& trigger) {
        const bool isMeant = trigger.kind == kind && path.find(trigger.part) != std::string::npos;
        if (!isMeant || --trigger.first > 0) return false;
        due.push_back(trigger.command);
        return true;
    });
    for (const TWords& command : due) {
        Tell(command);
    }
    if (told.delay.count() > 0) {
        const auto delay = told.delay;
        guard.unlock();
        std::this_thread::sleep_for(delay);
        guard.lock();
    }
    if (told.downError != 0 && TClock::now() >= told.downUntil) {
        told.downError = 0;
    }
    if (told.downError != 0 && IsBelow(path, told.downPath)) {
        return told.downError;
    }
    for (TFault& fault : told.faults) {
        if (fault.kind == kind && path.find(fault.part) != std::string::npos) {
            --fault.first;
            if (fault.first <= 0 && fault.first > -fault.times) {
                return fault.error;
            }
        }
    }
    return 0;
}

int Result(int answer) {
    return answer < 0 ? -errno : 0;
}

bool IsFull(long long wanted) {
    const std::lock_guard guard(lock);
    if (told.room < 0) return false;
    if (told.room == 0 || told.room < wanted) return true;
    told.room -= wanted;
    return false;
}

void Round(timespec& time) {
    if (told.timeStep > 0 && time.tv_nsec != UTIME_NOW && time.tv_nsec != UTIME_OMIT) {
        time.tv_nsec = 0;
        time.tv_sec -= time.tv_sec % told.timeStep;
    }
}

void RoundTimes(struct stat& status) {
    const std::lock_guard guard(lock);
    Round(status.st_mtim);
    Round(status.st_atim);
}

int Handle(const fuse_file_info* info) {
    return static_cast<int>(info->fh);
}

int GetAttr(const char* path, struct stat* status, fuse_file_info* info) {
    if (const int error = Enter("getattr", path)) return -error;
    const int answer = info != nullptr ? fstat(Handle(info), status) : lstat(Real(path).c_str(), status);
    if (answer < 0) return -errno;
    RoundTimes(*status);
    return 0;
}

struct TListing {
    std::string folder;
    std::vector<std::string> names;
};

int OpenDir(const char* path, fuse_file_info* info) {
    if (const int error = Enter("opendir", path)) return -error;
    auto listing = std::make_unique<TListing>();
    listing->folder = Real(path);
    DIR* const directory = opendir(listing->folder.c_str());
    if (directory == nullptr) return -errno;
    while (const dirent* entry = readdir(directory)) {
        listing->names.emplace_back(entry->d_name);
    }
    closedir(directory);
    info->fh = reinterpret_cast<std::uint64_t>(listing.release());
    return 0;
}

int ReadDir(const char* path, void* buffer, fuse_fill_dir_t fill, off_t offset, fuse_file_info* info,
            fuse_readdir_flags) {
    if (const int error = Enter("readdir", path)) return -error;
    const auto& listing = *reinterpret_cast<const TListing*>(info->fh);
    std::unique_lock guard(lock);
    const bool apart = told.apart;
    const auto cut = told.cuts.find(path);
    const auto [end, cutError] = cut != told.cuts.end() ? cut->second : std::pair{listing.names.size(), 0};
    guard.unlock();
    const auto first = static_cast<std::size_t>(offset);
    if (cutError != 0 && first >= end) return -cutError;
    for (std::size_t index = first; index < std::min(end, listing.names.size()); ++index) {
        const std::string& name = listing.names[index];
        struct stat status {};
        // Attributes come with the names, as from a server.
        const bool plus = lstat((listing.folder + "/" + name).c_str(), &status) == 0;
        RoundTimes(status);
        if (fill(buffer, (apart ? Replaced(name, false) : name).c_str(), &status,
                 static_cast<off_t>(index + 1), plus ? FUSE_FILL_DIR_PLUS : fuse_fill_dir_flags{})) {
            break;
        }
    }
    return 0;
}

int ReleaseDir(const char*, fuse_file_info* info) {
    delete reinterpret_cast<TListing*>(info->fh);
    return 0;
}

int OpenReal(const char* path, int flags, mode_t mode, fuse_file_info* info) {
    const int file = open(Real(path).c_str(), flags, mode);
    if (file < 0) return -errno;
    info->fh = static_cast<std::uint64_t>(file);
    // Each read and write of a program is one of ours.
    info->direct_io = 1;
    return 0;
}

int Open(const char* path, fuse_file_info* info) {
    if (const int error = Enter("open", path)) return -error;
    return OpenReal(path, info->flags & ~O_APPEND, 0, info);
}

int Create(const char* path, mode_t mode, fuse_file_info* info) {
    if (const int error = Enter("create", path)) return -error;
    if (IsFull(0)) return -ENOSPC;
    {
        const std::lock_guard guard(lock);
        told.created += std::string(path) + "\n";
    }
    return OpenReal(path, info->flags | O_CREAT, mode, info);
}

int Read(const char* path, char* buffer, std::size_t size, off_t offset, fuse_file_info* info) {
    if (const int error = Enter("read", path)) return -error;
    {
        const std::lock_guard guard(lock);
        if (const auto bad = told.badSectors.find(path != nullptr ? path : "");
            bad != told.badSectors.end()) {
            if (offset >= bad->second) return -EIO;
            size = std::min(size, static_cast<std::size_t>(bad->second - offset));
        }
    }
    const ssize_t answer = pread(Handle(info), buffer, size, offset);
    return answer < 0 ? -errno : static_cast<int>(answer);
}

bool IsToBeLost(int file) {
    struct stat status {};
    const std::lock_guard guard(lock);
    if (!told.lose || fstat(file, &status) != 0) return false;
    told.lost.insert(status.st_ino);
    return true;
}

int Write(const char* path, const char* buffer, std::size_t size, off_t offset, fuse_file_info* info) {
    if (const int error = Enter("write", path)) return -error;
    if (IsFull(static_cast<long long>(size))) return -ENOSPC;
    const int file = Handle(info);
    if (IsToBeLost(file)) {
        const off_t end = std::max(lseek(file, 0, SEEK_END), offset + static_cast<off_t>(size));
        return ftruncate(file, end) == 0 ? static_cast<int>(size) : -errno;
    }
    const ssize_t answer = pwrite(file, buffer, size, offset);
    return answer < 0 ? -errno : static_cast<int>(answer);
}

int LostError(int file) {
    struct stat status {};
    const std::lock_guard guard(lock);
    return fstat(file, &status) == 0 && told.lost.contains(status.st_ino) ? EIO : 0;
}

int Flush(const char* path, fuse_file_info* info) {
    if (const int error = Enter("flush", path)) return -error;
    return -LostError(Handle(info));
}

int Fsync(const char* path, int, fuse_file_info* info) {
    if (const int error = Enter("fsync", path)) return -error;
    if (const int error = LostError(Handle(info))) return -error;
    return Result(fsync(Handle(info)));
}

int Release(const char* path, fuse_file_info* info) {
    Enter("release", path);
    return Result(close(Handle(info)));
}

int Rename(const char* from, const char* to, unsigned flags) {
    if (const int error = Enter("rename", to)) return -error;
    return Result(renameat2(AT_FDCWD, Real(from).c_str(), AT_FDCWD, Real(to).c_str(), flags));
}

int Unlink(const char* path) {
    if (const int error = Enter("unlink", path)) return -error;
    return Result(unlink(Real(path).c_str()));
}

int MakeDir(const char* path, mode_t mode) {
    if (const int error = Enter("mkdir", path)) return -error;
    if (IsFull(0)) return -ENOSPC;
    return Result(mkdir(Real(path).c_str(), mode));
}

int RemoveDir(const char* path) {
    if (const int error = Enter("rmdir", path)) return -error;
    return Result(rmdir(Real(path).c_str()));
}

int Truncate(const char* path, off_t size, fuse_file_info* info) {
    if (const int error = Enter("truncate", path)) return -error;
    return Result(info != nullptr ? ftruncate(Handle(info), size) : truncate(Real(path).c_str(), size));
}

int SetTimes(const char* path, const timespec times[2], fuse_file_info* info) {
    if (const int error = Enter("utimens", path)) return -error;
    timespec rounded[2] = {times[0], times[1]};
    {
        const std::lock_guard guard(lock);
        Round(rounded[0]);
        Round(rounded[1]);
    }
    return Result(info != nullptr ? futimens(Handle(info), rounded)
                                  : utimensat(AT_FDCWD, Real(path).c_str(), rounded, AT_SYMLINK_NOFOLLOW));
}

int ChangeMode(const char* path, mode_t mode, fuse_file_info* info) {
    if (const int error = Enter("chmod", path)) return -error;
    return Result(info != nullptr ? fchmod(Handle(info), mode) : chmod(Real(path).c_str(), mode));
}

int ReadLink(const char* path, char* buffer, std::size_t size) {
    const ssize_t length = readlink(Real(path).c_str(), buffer, size - 1);
    if (length < 0) return -errno;
    buffer[length] = '\0';
    return 0;
}

int StatFs(const char* path, struct statvfs* status) {
    if (statvfs(Real(path).c_str(), status) < 0) return -errno;
    const std::lock_guard guard(lock);
    if (told.room >= 0) {
        status->f_bavail = status->f_bfree = static_cast<fsblkcnt_t>(told.room) / status->f_frsize;
    }
    return 0;
}

std::string Counts() {
    std::ostringstream text;
    for (const char* kind : kKinds) {
        text << kind << ' ' << told.counts[kind] << '\n';
    }
    return text.str();
}

// Carries out a command under the lock; the answer.
std::string Tell(const TWords& words) {
    const auto word = [&](std::size_t index) { return index < words.size() ? words[index] : ""; };
    const auto number = [&](std::size_t index) { return std::atoll(word(index).c_str()); };
    const std::string& name = words.front();
    const bool ofKind = name == "fail" || name == "when";
    if (ofKind && std::find(kKinds.begin(), kKinds.end(), word(1)) == kKinds.end()) {
        return "error: no such kind of call";
    }
    if (name == "backing") {
        backing = word(1);
    } else if (name == "times") {
        told.timeStep = number(1);
    } else if (name == "apart") {
        told.apart = number(1) != 0;
    } else if (name == "delay") {
        told.delay = std::chrono::milliseconds(number(1));
    } else if (name == "down") {
        told.downError = static_cast<int>(number(1));
        const auto milliseconds = std::chrono::milliseconds(number(2));
        told.downUntil = milliseconds.count() == 0 ? TClock::time_point::max() : TClock::now() + milliseconds;
        told.downPath = word(3);
    } else if (name == "up") {
        told.downError = 0;
    } else if (name == "fail") {
        told.faults.push_back({word(1), number(2), number(3), static_cast<int>(number(4)), word(5)});
    } else if (name == "room") {
        told.room = number(1);
    } else if (name == "bad") {
        told.badSectors[word(1)] = number(2);
    } else if (name == "cut") {
        told.cuts[word(1)] = {static_cast<std::size_t>(number(2)), static_cast<int>(number(3))};
    } else if (name == "lose") {
        told.lose = number(1) != 0;
        if (!told.lose) told.lost.clear();
    } else if (name == "after" && words.size() > 2) {
        TellLater(std::chrono::milliseconds(number(1)), TWords(words.begin() + 2, words.end()));
    } else if (name == "when" && words.size() > 4) {
        told.triggers.push_back({word(1), number(2), word(3), TWords(words.begin() + 4, words.end())});
    } else if (name == "reset") {
        told = TFaults();
    } else if (name == "counts") {
        return Counts();
    } else if (name == "created") {
        return told.created;
    } else {
        return "error: no such command";
    }
    return "ok";
}

TWords Split(const std::string& line) {
    TWords words(1);
    for (const char letter : line) {
        if (letter == '\n') break;
        if (letter == '\t') {
            words.emplace_back();
        } else {
            words.back() += letter;
        }
    }
    return words;
}

void Serve(int listener) {
    while (true) {
        const int peer = accept(listener, nullptr, nullptr);
        if (peer < 0) return;
        char line[4096];
        const ssize_t length = read(peer, line, sizeof(line));
        if (length > 0) {
            std::unique_lock guard(lock);
            const std::string answer = Tell(Split(std::string(line, static_cast<std::size_t>(length))));
            guard.unlock();
            static_cast<void>(!write(peer, answer.data(), answer.size()));
        }
        close(peer);
    }
}

// The kernel asks only now, so who can connect finds the file system mounted.
void* Begin(fuse_conn_info* connection, fuse_config* config) {
    connection->want |= connection->capable & (FUSE_CAP_READDIRPLUS | FUSE_CAP_READDIRPLUS_AUTO);
    config->use_ino = 1;
    config->hard_remove = 1;
    // What changes behind the kernel's back shows at once if that is 0. That a name is missing is never kept.
    config->entry_timeout = config->attr_timeout = keptSeconds;
    config->negative_timeout = 0;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    controlSocket.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(listener, 5) != 0) {
        std::perror("faulty_fs: socket");
        std::exit(1);
    }
    std::thread(Serve, listener).detach();
    return nullptr;
}

fuse_operations Operations() {
    fuse_operations calls{};
    calls.getattr = GetAttr;
    calls.readlink = ReadLink;
    calls.mkdir = MakeDir;
    calls.unlink = Unlink;
    calls.rmdir = RemoveDir;
    calls.rename = Rename;
    calls.chmod = ChangeMode;
    calls.truncate = Truncate;
    calls.open = Open;
    calls.read = Read;
    calls.write = Write;
    calls.statfs = StatFs;
    calls.flush = Flush;
    calls.release = Release;
    calls.fsync = Fsync;
    calls.opendir = OpenDir;
    calls.readdir = ReadDir;
    calls.releasedir = ReleaseDir;
    calls.init = Begin;
    calls.create = Create;
    calls.utimens = SetTimes;
    return calls;
}

}  // namespace

int main(int count, char** words) {
    if (count != 4 && count != 5) {
        std::fprintf(stderr, "usage: faulty_fs BACKING MOUNT SOCKET [SECONDS]\n");
        return 64;
    }
    backing = words[1];
    controlSocket = words[3];
    keptSeconds = count == 5 ? std::atof(words[4]) : 0;
    char foreground[] = "-f";
    char* arguments[] = {words[0], foreground, words[2], nullptr};
    const fuse_operations calls = Operations();
    return fuse_main(3, arguments, &calls, nullptr);
}
