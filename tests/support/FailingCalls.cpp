// Build flags may redirect these names; the functions are defined under the plain ones.
#undef _FORTIFY_SOURCE
#undef _FILE_OFFSET_BITS

#include "support/FailingCalls.h"

#include <QFile>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <string>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

struct Watch
{
    std::string folder;
    DiskFault fault = DiskFault::Fails;
    QList<int> numbers;
    bool hidesKinds = false;

    int count = 0;
    bool pulledOut = false;
    int spoiledDescriptor = -1;
    std::map<int, std::string> descriptors;
    std::map<DIR *, std::string> streams;

    QByteArrayList calls;
    QByteArrayList failed;
    QList<int> errors;
};

// Read by every call of the process, even before main: needs no constructor and no lock.
constinit std::atomic<bool> armed = false;
constinit std::mutex mutex;
constinit Watch *watch = nullptr;

struct Call
{
    const char *name;
    /// The error that a failure reports.
    int error;
    bool canBeInterrupted = false;
    int descriptor = -1;
    /// Bytes to move, for a read or a write.
    size_t size = 0;
};

enum class Verdict
{
    Works,
    Fails,
    Halves
};

bool canHappen(DiskFault fault, const Call &call)
{
    switch (fault) {
    case DiskFault::Interrupted:
        return call.canBeInterrupted;
    case DiskFault::Short:
    case DiskFault::ShortThenFails:
        return call.size > 1;
    case DiskFault::Fails:
    case DiskFault::FailsForGood:
        break;
    }
    return true;
}

Verdict failWith(int error)
{
    if (!watch->errors.contains(error))
        watch->errors.append(error);
    errno = error;
    return Verdict::Fails;
}

// With the lock held, for a call on something below the folder.
Verdict judge(const Call &call, const std::string &path)
{
    watch->calls.append(call.name);
    const bool isSpoiled = call.size > 0 && call.descriptor == watch->spoiledDescriptor;
    if (watch->pulledOut || isSpoiled)
        return failWith(call.error);
    if (!canHappen(watch->fault, call) || !watch->numbers.contains(watch->count++))
        return Verdict::Works;
    watch->failed.append(QByteArray(call.name) + ' ' + QByteArray::number(watch->count - 1) + ' '
                         + path.c_str());
    switch (watch->fault) {
    case DiskFault::Short:
        return Verdict::Halves;
    case DiskFault::ShortThenFails:
        watch->spoiledDescriptor = call.descriptor;
        return Verdict::Halves;
    case DiskFault::Interrupted:
        return failWith(EINTR);
    case DiskFault::FailsForGood:
        watch->pulledOut = true;
        break;
    case DiskFault::Fails:
        break;
    }
    return failWith(call.error);
}

std::string absolutePath(const char *path)
{
    if (*path == '/')
        return path;
    char folder[PATH_MAX];
    if (!getcwd(folder, sizeof folder))
        return {};
    return std::string(folder) + (folder[1] ? "/" : "") + path;
}

Verdict judgePath(const Call &call, const char *path)
{
    if (!armed)
        return Verdict::Works;
    const std::string absolute = absolutePath(path);
    const std::lock_guard lock(mutex);
    return watch && absolute.starts_with(watch->folder) ? judge(call, absolute) : Verdict::Works;
}

Verdict judgeDescriptor(const Call &call)
{
    if (!armed)
        return Verdict::Works;
    const std::lock_guard lock(mutex);
    if (!watch)
        return Verdict::Works;
    const auto found = watch->descriptors.find(call.descriptor);
    return found == watch->descriptors.end() ? Verdict::Works : judge(call, found->second);
}

Verdict judgeStream(const Call &call, DIR *stream)
{
    if (!armed)
        return Verdict::Works;
    const std::lock_guard lock(mutex);
    if (!watch)
        return Verdict::Works;
    const auto found = watch->streams.find(stream);
    return found == watch->streams.end() ? Verdict::Works : judge(call, found->second);
}

// A path that is relative to an open folder, whose own path is known if it is watched.
std::string pathIn(int folder, const char *path)
{
    if (*path == '/' || folder == AT_FDCWD)
        return absolutePath(path);
    const std::lock_guard lock(mutex);
    if (!watch)
        return {};
    for (const auto &[stream, name] : watch->streams) {
        if (dirfd(stream) == folder)
            return name + '/' + path;
    }
    const auto found = watch->descriptors.find(folder);
    return found == watch->descriptors.end() ? std::string() : found->second + '/' + path;
}

Verdict judgePlace(Call call, int descriptor, const char *path)
{
    if (!armed)
        return Verdict::Works;
    if (*path)
        return judgePath(call, pathIn(descriptor, path).c_str());
    call.descriptor = descriptor;
    return judgeDescriptor(call);
}

int noteOpened(int descriptor, const char *path)
{
    if (!armed || descriptor < 0)
        return descriptor;
    const int error = errno;
    const std::string absolute = absolutePath(path);
    const std::lock_guard lock(mutex);
    if (watch && absolute.starts_with(watch->folder))
        watch->descriptors[descriptor] = absolute;
    errno = error;
    return descriptor;
}

DIR *noteOpened(DIR *stream, const char *path)
{
    if (!armed || !stream)
        return stream;
    const std::string absolute = absolutePath(path);
    const std::lock_guard lock(mutex);
    if (watch && absolute.starts_with(watch->folder))
        watch->streams[stream] = absolute;
    return stream;
}

void noteClosed(int descriptor)
{
    if (!armed)
        return;
    const std::lock_guard lock(mutex);
    if (!watch)
        return;
    watch->descriptors.erase(descriptor);
    if (watch->spoiledDescriptor == descriptor)
        watch->spoiledDescriptor = -1;
}

void noteClosed(DIR *stream)
{
    if (!armed)
        return;
    const std::lock_guard lock(mutex);
    if (watch)
        watch->streams.erase(stream);
}

template <typename Entry> Entry *hideKind(Entry *entry)
{
    if (!armed || !entry)
        return entry;
    const std::lock_guard lock(mutex);
    if (watch && watch->hidesKinds)
        entry->d_type = DT_UNKNOWN;
    return entry;
}

int errorOfOpen(int flags)
{
    return (flags & O_ACCMODE) == O_RDONLY ? EIO : ENOSPC;
}

mode_t modeOf(int flags, va_list arguments)
{
    return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(arguments, mode_t) : 0;
}

// The definition that ours hides: that of a statically linked sanitizer, which has to see the call, or else
// the next one, of a shared sanitizer or the C library.
template <typename Function> Function *hidden(const char *name, Function *interceptor)
{
    return interceptor ? interceptor : reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

FailingCalls::FailingCalls(const QString &folder, DiskFault fault, const QList<int> &numbers)
{
    const std::lock_guard lock(mutex);
    watch = new Watch;
    watch->folder = QFile::encodeName(folder).toStdString() + '/';
    watch->fault = fault;
    watch->numbers = numbers;
    armed = true;
}

FailingCalls::~FailingCalls()
{
    const std::lock_guard lock(mutex);
    armed = false;
    delete watch;
    watch = nullptr;
}

void FailingCalls::hideKinds()
{
    const std::lock_guard lock(mutex);
    watch->hidesKinds = true;
}

QByteArrayList FailingCalls::failed() const
{
    const std::lock_guard lock(mutex);
    return watch->failed;
}

QList<int> FailingCalls::errors() const
{
    const std::lock_guard lock(mutex);
    return watch->errors;
}

QByteArrayList FailingCalls::calls() const
{
    const std::lock_guard lock(mutex);
    return watch->calls;
}

#define HIDDEN(name) static auto *const next = hidden(#name, __interceptor_##name)
#define DECLARE_INTERCEPTOR(name) extern "C" decltype(::name) __interceptor_##name __attribute__((weak));

#define DEFINE_OPEN(name)                                                                                    \
    DECLARE_INTERCEPTOR(name)                                                                                \
    extern "C" int name(const char *path, int flags, ...)                                                    \
    {                                                                                                        \
        HIDDEN(name);                                                                                        \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        if (judgePath({"open", errorOfOpen(flags), true}, path) == Verdict::Fails)                           \
            return -1;                                                                                       \
        return noteOpened(next(path, flags, mode), path);                                                    \
    }
DEFINE_OPEN(open)
DEFINE_OPEN(open64)

#define DEFINE_OPENAT(name)                                                                                  \
    DECLARE_INTERCEPTOR(name)                                                                                \
    extern "C" int name(int folder, const char *path, int flags, ...)                                        \
    {                                                                                                        \
        HIDDEN(name);                                                                                        \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        const std::string place = armed ? pathIn(folder, path) : std::string();                              \
        if (judgePath({"open", errorOfOpen(flags), true}, place.c_str()) == Verdict::Fails)                  \
            return -1;                                                                                       \
        return noteOpened(next(folder, path, flags, mode), place.c_str());                                   \
    }
DEFINE_OPENAT(openat)
DEFINE_OPENAT(openat64)

DECLARE_INTERCEPTOR(close)
extern "C" int close(int descriptor)
{
    HIDDEN(close);
    const Verdict verdict = judgeDescriptor({"close", EIO, true, descriptor});
    const int error = errno;
    noteClosed(descriptor);
    const int result = next(descriptor);
    if (verdict != Verdict::Fails)
        return result;
    errno = error;
    return -1;
}

// A read or write of one buffer.
#define DEFINE_TRANSFER(name, shownName, error, parameters, ...)                                             \
    DECLARE_INTERCEPTOR(name)                                                                                \
    extern "C" ssize_t name parameters                                                                       \
    {                                                                                                        \
        HIDDEN(name);                                                                                        \
        const Verdict verdict = judgeDescriptor({shownName, error, true, descriptor, size});                 \
        if (verdict == Verdict::Fails)                                                                       \
            return -1;                                                                                       \
        if (verdict == Verdict::Halves)                                                                      \
            size /= 2;                                                                                       \
        return next(__VA_ARGS__);                                                                            \
    }
DEFINE_TRANSFER(read, "read", EIO, (int descriptor, void *data, size_t size), descriptor, data, size)
DEFINE_TRANSFER(pread, "read", EIO, (int descriptor, void *data, size_t size, off_t offset), descriptor, data,
                size, offset)
DEFINE_TRANSFER(pread64, "read", EIO, (int descriptor, void *data, size_t size, off64_t offset), descriptor,
                data, size, offset)
DEFINE_TRANSFER(write, "write", ENOSPC, (int descriptor, const void *data, size_t size), descriptor, data,
                size)
DEFINE_TRANSFER(pwrite, "write", ENOSPC, (int descriptor, const void *data, size_t size, off_t offset),
                descriptor, data, size, offset)
DEFINE_TRANSFER(pwrite64, "write", ENOSPC, (int descriptor, const void *data, size_t size, off64_t offset),
                descriptor, data, size, offset)

// A call that returns -1 on failure. `specifier` is noexcept where the C library declares it.
#define DEFINE_CALL(result, name, specifier, parameters, verdict, ...)                                       \
    DECLARE_INTERCEPTOR(name)                                                                                \
    extern "C" result name parameters specifier                                                              \
    {                                                                                                        \
        HIDDEN(name);                                                                                        \
        return (verdict) == Verdict::Fails ? -1 : next(__VA_ARGS__);                                         \
    }

#define ON_PATH(name, error) judgePath({name, error}, path)
#define ON_TWO_PATHS(name, error)                                                                            \
    judgePath({name, error}, path) == Verdict::Fails ? Verdict::Fails : judgePath({name, error}, path2)
#define ON_DESCRIPTOR(name, error) judgeDescriptor({name, error, false, descriptor})
#define ON_PLACE(name, error) judgePlace({name, error}, descriptor, path)
// Uses two files, of which only one may be watched.
#define ON_TWO_DESCRIPTORS(name, error)                                                                      \
    judgeDescriptor({name, error, true, descriptor}) == Verdict::Fails                                       \
        ? Verdict::Fails                                                                                     \
        : judgeDescriptor({name, error, true, descriptor2})

DEFINE_CALL(int, access, noexcept, (const char *path, int mode), ON_PATH("access", EIO), path, mode)
DEFINE_CALL(int, faccessat, noexcept, (int descriptor, const char *path, int mode, int flags),
            ON_PLACE("access", EIO), descriptor, path, mode, flags)
DEFINE_CALL(int, stat, noexcept, (const char *path, struct stat *status), ON_PATH("stat", EIO), path, status)
DEFINE_CALL(int, stat64, noexcept, (const char *path, struct stat64 *status), ON_PATH("stat", EIO), path,
            status)
DEFINE_CALL(int, lstat, noexcept, (const char *path, struct stat *status), ON_PATH("lstat", EIO), path,
            status)
DEFINE_CALL(int, lstat64, noexcept, (const char *path, struct stat64 *status), ON_PATH("lstat", EIO), path,
            status)
DEFINE_CALL(int, fstat, noexcept, (int descriptor, struct stat *status), ON_DESCRIPTOR("fstat", EIO),
            descriptor, status)
DEFINE_CALL(int, fstat64, noexcept, (int descriptor, struct stat64 *status), ON_DESCRIPTOR("fstat", EIO),
            descriptor, status)
DEFINE_CALL(int, fstatat, noexcept, (int descriptor, const char *path, struct stat *status, int flags),
            ON_PLACE("stat", EIO), descriptor, path, status, flags)
DEFINE_CALL(int, fstatat64, noexcept, (int descriptor, const char *path, struct stat64 *status, int flags),
            ON_PLACE("stat", EIO), descriptor, path, status, flags)
DEFINE_CALL(int, statx, noexcept,
            (int descriptor, const char *path, int flags, unsigned mask, struct statx *status),
            ON_PLACE("stat", EIO), descriptor, path, flags, mask, status)

DEFINE_CALL(int, mkdir, noexcept, (const char *path, mode_t mode), ON_PATH("mkdir", ENOSPC), path, mode)
DEFINE_CALL(int, rmdir, noexcept, (const char *path), ON_PATH("rmdir", EIO), path)
DEFINE_CALL(int, unlink, noexcept, (const char *path), ON_PATH("unlink", EIO), path)
DEFINE_CALL(int, mkdirat, noexcept, (int descriptor, const char *path, mode_t mode),
            ON_PLACE("mkdir", ENOSPC), descriptor, path, mode)
DEFINE_CALL(int, unlinkat, noexcept, (int descriptor, const char *path, int flags), ON_PLACE("unlink", EIO),
            descriptor, path, flags)
DEFINE_CALL(int, rename, noexcept, (const char *path, const char *path2), ON_TWO_PATHS("rename", ENOSPC),
            path, path2)
DEFINE_CALL(int, renameat2, noexcept,
            (int folder, const char *path, int folder2, const char *path2, unsigned flags),
            ON_TWO_PATHS("rename", ENOSPC), folder, path, folder2, path2, flags)
DEFINE_CALL(int, link, noexcept, (const char *path, const char *path2), ON_TWO_PATHS("link", ENOSPC), path,
            path2)
DEFINE_CALL(int, linkat, noexcept, (int folder, const char *path, int folder2, const char *path2, int flags),
            ON_TWO_PATHS("link", ENOSPC), folder, path, folder2, path2, flags)
DEFINE_CALL(int, symlink, noexcept, (const char *path2, const char *path), ON_PATH("symlink", ENOSPC), path2,
            path)
DEFINE_CALL(ssize_t, readlink, noexcept, (const char *path, char *data, size_t size),
            ON_PATH("readlink", EIO), path, data, size)
DEFINE_CALL(int, chmod, noexcept, (const char *path, mode_t mode), ON_PATH("chmod", EIO), path, mode)
DEFINE_CALL(int, truncate, noexcept, (const char *path, off_t size), ON_PATH("truncate", ENOSPC), path, size)
DEFINE_CALL(int, truncate64, noexcept, (const char *path, off64_t size), ON_PATH("truncate", ENOSPC), path,
            size)

DEFINE_CALL(off_t, lseek, noexcept, (int descriptor, off_t offset, int whence), ON_DESCRIPTOR("lseek", EIO),
            descriptor, offset, whence)
DEFINE_CALL(off64_t, lseek64, noexcept, (int descriptor, off64_t offset, int whence),
            ON_DESCRIPTOR("lseek", EIO), descriptor, offset, whence)
DEFINE_CALL(int, ftruncate, noexcept, (int descriptor, off_t size), ON_DESCRIPTOR("ftruncate", ENOSPC),
            descriptor, size)
DEFINE_CALL(int, ftruncate64, noexcept, (int descriptor, off64_t size), ON_DESCRIPTOR("ftruncate", ENOSPC),
            descriptor, size)
DEFINE_CALL(int, fchmod, noexcept, (int descriptor, mode_t mode), ON_DESCRIPTOR("fchmod", EIO), descriptor,
            mode)
DEFINE_CALL(int, futimens, noexcept, (int descriptor, const timespec *times), ON_DESCRIPTOR("futimens", EIO),
            descriptor, times)
DEFINE_CALL(int, fsync, , (int descriptor), ON_DESCRIPTOR("fsync", EIO), descriptor)
DEFINE_CALL(int, fdatasync, , (int descriptor), ON_DESCRIPTOR("fdatasync", EIO), descriptor)
DEFINE_CALL(ssize_t, readv, , (int descriptor, const iovec *pieces, int count), ON_DESCRIPTOR("readv", EIO),
            descriptor, pieces, count)
DEFINE_CALL(ssize_t, writev, , (int descriptor, const iovec *pieces, int count),
            ON_DESCRIPTOR("writev", ENOSPC), descriptor, pieces, count)
DEFINE_CALL(ssize_t, sendfile, noexcept, (int descriptor, int descriptor2, off_t *offset, size_t size),
            ON_TWO_DESCRIPTORS("sendfile", ENOSPC), descriptor, descriptor2, offset, size)
DEFINE_CALL(ssize_t, sendfile64, noexcept, (int descriptor, int descriptor2, off64_t *offset, size_t size),
            ON_TWO_DESCRIPTORS("sendfile", ENOSPC), descriptor, descriptor2, offset, size)
DEFINE_CALL(ssize_t, copy_file_range, ,
            (int descriptor, off64_t *offset, int descriptor2, off64_t *offset2, size_t size, unsigned flags),
            ON_TWO_DESCRIPTORS("copy_file_range", ENOSPC), descriptor, offset, descriptor2, offset2, size,
            flags)

// Clones files, among much else; takes one argument at most.
DECLARE_INTERCEPTOR(ioctl)
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    HIDDEN(ioctl);
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    return ON_DESCRIPTOR("ioctl", EIO) == Verdict::Fails ? -1 : next(descriptor, request, argument);
}

// The C library resolves a path internally, so none of the calls above is seen. ENOENT is the only error for
// which Qt does not keep the path as it is.
#define FOLLOW(...) ON_PATH("realpath", ENOENT) == Verdict::Fails ? nullptr : next(__VA_ARGS__)

DECLARE_INTERCEPTOR(realpath)
extern "C" char *realpath(const char *path, char *resolved) noexcept
{
    HIDDEN(realpath);
    return FOLLOW(path, resolved);
}

// The name in a hardened build, which no header declares here.
extern "C" char *__realpath_chk(const char *path, char *resolved, size_t size) noexcept;
DECLARE_INTERCEPTOR(__realpath_chk)
extern "C" char *__realpath_chk(const char *path, char *resolved, size_t size) noexcept
{
    HIDDEN(__realpath_chk);
    return FOLLOW(path, resolved, size);
}

DECLARE_INTERCEPTOR(opendir)
extern "C" DIR *opendir(const char *path)
{
    HIDDEN(opendir);
    return ON_PATH("opendir", EIO) == Verdict::Fails ? nullptr : noteOpened(next(path), path);
}

DECLARE_INTERCEPTOR(readdir)
extern "C" dirent *readdir(DIR *stream)
{
    HIDDEN(readdir);
    return judgeStream({"readdir", EIO}, stream) == Verdict::Fails ? nullptr : hideKind(next(stream));
}

DECLARE_INTERCEPTOR(readdir64)
extern "C" dirent64 *readdir64(DIR *stream)
{
    HIDDEN(readdir64);
    return judgeStream({"readdir", EIO}, stream) == Verdict::Fails ? nullptr : hideKind(next(stream));
}

DECLARE_INTERCEPTOR(closedir)
extern "C" int closedir(DIR *stream)
{
    HIDDEN(closedir);
    const Verdict verdict = judgeStream({"closedir", EIO}, stream);
    const int error = errno;
    noteClosed(stream);
    const int result = next(stream);
    if (verdict != Verdict::Fails)
        return result;
    errno = error;
    return -1;
}
