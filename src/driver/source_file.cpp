#include "driver/source_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/diagnostics.h"
#include "driver/file.h"

namespace {

bool is_dash(const char* name) { return std::strcmp(name, "-") == 0; }

// Reports what the system says about a file.
failure report_system(const char* what, const char* name) {
    return RUN_ERROR("can't %s '%s': %s", what, name, std::strerror(errno));
}

failure report_too_large(const char* name) { return RUN_ERROR("can't read '%s': it is larger than 2 GB", name); }

// Reads from the descriptor to its end, which may be further than its size tells.
result read_all(array<std::uint8_t>& bytes, int descriptor, std::size_t expected, const char* name) {
    constexpr std::size_t behind = 64;  // so that an ordinary file's end shows without growing
    for (std::size_t room = expected + behind;; room = std::size_t{64} * 1024) {
        std::uint8_t* to = bytes.extend(room);
        if (to == nullptr) return report_exhausted();
        while (room > 0) {
            const ssize_t count = read(descriptor, to, room);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return report_system("read", name);
            to += count;
            room -= static_cast<std::size_t>(count);
            if (count == 0 || bytes.size() - room > max_source_size) break;
        }
        bytes.truncate(bytes.size() - room);
        if (bytes.size() > max_source_size) return report_too_large(name);
        if (room > 0) return result::ok;
    }
}

result write_all(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return result::failed;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return result::ok;
}

// The access that a new file gets, or that of the file in its place.
mode_t mode_for(const struct stat* existing) {
    if (existing != nullptr) return existing->st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// Writes beside the place, under a name that is not longer for a long one, and renames. A signal that ends the
// run must not leave the file behind.
result write_beside(const char* place, std::span<const std::uint8_t> bytes, const struct stat* existing) {
    std::array<char, PATH_MAX> beside;
    const char* const last_slash = std::strrchr(place, '/');
    const auto folder = static_cast<int>(last_slash == nullptr ? 0 : last_slash + 1 - place);
    const int size = std::snprintf(beside.data(), beside.size(), "%.*s.varsul-as-XXXXXX", folder, place);
    if (size < 0 || static_cast<std::size_t>(size) >= beside.size()) {
        errno = ENAMETOOLONG;
        return result::failed;
    }
    file made(mkostemp(beside.data(), O_CLOEXEC));
    if (!made.is_open()) return result::failed;
    const bool is_whole = !failed(write_all(made.descriptor(), bytes)) &&
                          fchmod(made.descriptor(), mode_for(existing)) == 0 && made.close() &&
                          rename(beside.data(), place) == 0;
    if (is_whole) return result::ok;
    const int reason = errno;
    (void)unlink(beside.data());
    errno = reason;
    return result::failed;
}

class signals_held {
public:
    signals_held() {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, &before_);
    }
    ~signals_held() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    signals_held(const signals_held&) = delete;
    signals_held& operator=(const signals_held&) = delete;

private:
    sigset_t before_ = {};
};

result write_over(const char* name, std::span<const std::uint8_t> bytes) {
    file opened(open(name, O_WRONLY | O_CLOEXEC | O_NOCTTY));
    return opened.is_open() && !failed(write_all(opened.descriptor(), bytes)) && opened.close() ? result::ok
                                                                                                : result::failed;
}

}  // namespace

failure report_exhausted() { return RUN_ERROR("memory exhausted"); }

result load_source(source& text, const char* name, file_identity& identity) {
    const file opened(is_dash(name) ? dup(STDIN_FILENO) : open(name, O_RDONLY | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (!opened.is_open() || fstat(opened.descriptor(), &status) != 0) return report_system("open", name);
    identity = {status.st_dev, status.st_ino, S_ISREG(status.st_mode)};
    const std::size_t expected = identity.is_regular ? static_cast<std::size_t>(status.st_size) : 0;
    if (expected > max_source_size) return report_too_large(name);
    if (failed(read_all(text.bytes, opened.descriptor(), expected, name))) return result::failed;
    return failed(source_finish(text)) ? report_exhausted() : result::ok;
}

bool is_file(const file_identity& identity, const char* name) {
    struct stat status {};
    return identity.is_regular && !is_dash(name) && stat(name, &status) == 0 && status.st_dev == identity.device &&
           status.st_ino == identity.inode;
}

result replace_file(const char* name, std::span<const std::uint8_t> bytes) {
    if (is_dash(name))
        return failed(write_all(STDOUT_FILENO, bytes)) ? report_system("write", "standard output") : result::ok;
    const signals_held held;
    struct stat status {};
    const bool exists = stat(name, &status) == 0;
    if (exists && !S_ISREG(status.st_mode))
        return failed(write_over(name, bytes)) ? report_system("write", name) : result::ok;
    if (exists && access(name, W_OK) != 0) return report_system("write", name);
    // Where a link leads, so that the link stays.
    std::array<char, PATH_MAX> place;
    const bool is_resolved = exists && realpath(name, place.data()) != nullptr;
    const result outcome = write_beside(is_resolved ? place.data() : name, bytes, exists ? &status : nullptr);
    return failed(outcome) ? report_system("write", name) : result::ok;
}
