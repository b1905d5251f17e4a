#include "driver/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <limits>

#include "base/diagnostics.h"

namespace {

bool same_regular_file(const struct stat& opened, const char* other_name) {
    struct stat other {};
    return other_name != nullptr && stat(other_name, &other) == 0 && S_ISREG(other.st_mode) &&
           opened.st_dev == other.st_dev && opened.st_ino == other.st_ino;
}

// Reads exactly `size` bytes.
bool read_whole(int descriptor, std::uint8_t* to, std::size_t size) {
    while (size > 0) {
        const ssize_t count = read(descriptor, to, size);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        to += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

// Opens for writing without emptying. `created` receives whether the file is new, also behind a
// symbolic link that led nowhere.
file open_for_writing(const char* name, bool& created) {
    constexpr mode_t mode = 0666;  // as the umask allows
    struct stat status {};
    created = stat(name, &status) != 0;
    return file(open(name, O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY, mode));
}

// Removes the file itself, not a symbolic link to it.
void remove_file(const char* name) {
    char* const path = realpath(name, nullptr);
    if (path != nullptr) (void)unlink(path);
    std::free(path);
}

file refuse(const char* name) {
    (void)RUN_ERROR("can't open file '%s'", name);
    return {};
}

}  // namespace

bool file::close() {
    if (!is_open()) return true;
    return ::close(std::exchange(descriptor_, -1)) == 0;
}

result load_file(array<std::uint8_t>& buffer, const char* path) {
    // Without O_NONBLOCK the opening of a pipe would wait for its writer.
    const file script(open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!script.is_open()) return ERROR("can't open '%s'", path);
    const off_t size = lseek(script.descriptor(), 0, SEEK_END);
    if (size < 0) return ERROR("can't seek(SEEK_END) '%s'", path);
    if (lseek(script.descriptor(), 0, SEEK_SET) != 0) return ERROR("can't seek(SEEK_SET) '%s'", path);
    const bool has_size = size > 0 && size <= std::numeric_limits<std::int32_t>::max();
    if (has_size && !buffer.assign_unset(static_cast<std::size_t>(size))) {
        return ERROR("memory exhausted! (size=%d)", static_cast<int>(size));
    }
    if (!has_size || !read_whole(script.descriptor(), buffer.data(), buffer.size())) {
        return ERROR("can't read '%s'", path);
    }
    return result::ok;
}

file open_output(const char* name, std::initializer_list<const char*> other_names) {
    bool created = false;
    file opened = open_for_writing(name, created);
    struct stat status {};
    if (!opened.is_open() || fstat(opened.descriptor(), &status) != 0) return refuse(name);
    if (!S_ISREG(status.st_mode)) return opened;
    for (const char* const other_name : other_names) {
        if (!same_regular_file(status, other_name)) continue;
        if (created) remove_file(name);
        return refuse(name);
    }
    if (ftruncate(opened.descriptor(), 0) != 0) return refuse(name);
    return opened;
}

result redirect(int descriptor, const file& target) {
    if (dup2(target.descriptor(), descriptor) < 0) return RUN_ERROR("can't dup file descriptor");
    return result::ok;
}

void reserve_standard_descriptors() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        // The lowest free descriptor is taken: this one.
        if (fcntl(descriptor, F_GETFD) < 0) (void)open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY);
    }
}
