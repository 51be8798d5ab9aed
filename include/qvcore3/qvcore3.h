#ifndef QVCORE3_QVCORE3_H
#define QVCORE3_QVCORE3_H

/*
 * qvcore3: the platform layer under qvcl3. Plain C-callable functions with the
 * prefix QV. Every operation that can fail returns a result code (0 success,
 * negative failure) and never throws. Only this layer calls the operating
 * system.
 *
 * Handles are opaque 32-bit values. A stale or never-issued handle is reported
 * as QV_E_INVALIDARG, never dereferenced; so is a handle of another kind (a
 * mutex handle given to QVEventWait). A null required pointer is
 * QV_E_POINTER; outputs called optional below may be null.
 */

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define QVCORE3_API __attribute__((visibility("default")))
#else
#define QVCORE3_API
#endif

#ifdef __cplusplus
#define QVCORE3_NOEXCEPT noexcept
extern "C" {
#else
#define QVCORE3_NOEXCEPT
#endif

typedef int32_t QVRESULT;
typedef int32_t QVHANDLE;

#define QV_INVALID_HANDLE ((QVHANDLE)-1)

#define QV_S_OK ((QVRESULT)0)
#define QV_S_FALSE ((QVRESULT)1)
#define QV_E_FAIL ((QVRESULT)0x80004005)
#define QV_E_OUTOFMEMORY ((QVRESULT)0x8007000E)
#define QV_E_INVALIDARG ((QVRESULT)0x80070057)
#define QV_E_NOTIMPL ((QVRESULT)0x80004001)
#define QV_E_NOINTERFACE ((QVRESULT)0x80004002)
#define QV_E_POINTER ((QVRESULT)0x80004003)
#define QV_E_ILLEGAL_METHOD_CALL ((QVRESULT)0x80004007)
#define QV_E_BUFFER_TOO_SMALL ((QVRESULT)0x80004009)
#define QV_E_NOAGGREGATION ((QVRESULT)0x80040110)
#define QV_E_CLASSNOTAVAILABLE ((QVRESULT)0x80040111)
#define QV_E_FILE_NOT_FOUND ((QVRESULT)0x80070002)
#define QV_E_ACCESSDENIED ((QVRESULT)0x80070005)
#define QV_E_HANDLE_EOF ((QVRESULT)0x80070026)
#define QV_E_ALREADY_EXISTS ((QVRESULT)0x800700B7)
#define QV_E_TIMEOUT ((QVRESULT)0x800705B4)
/* A try operation found the object taken; not a fault of the caller. */
#define QV_E_BUSY ((QVRESULT)0x800700AA)

#define QV_SUCCEEDED(r) ((QVRESULT)(r) >= 0)
#define QV_FAILED(r) ((QVRESULT)(r) < 0)

/* ---- errors ------------------------------------------------------------ */

/* errno to result code: ENOENT, ENOMEM, EINVAL, EACCES, EEXIST, ETIMEDOUT have
   their own codes; anything else is 0x80070000 | errno. 0 gives 0. */
QVCORE3_API QVRESULT QVResultFromNative(int32_t nativeError) QVCORE3_NOEXCEPT;
/* The calling thread's errno. */
QVCORE3_API int32_t QVLastNativeError(void) QVCORE3_NOEXCEPT;

/* ---- memory ------------------------------------------------------------ */

QVCORE3_API void* QVMemAlloc(size_t size) QVCORE3_NOEXCEPT;
QVCORE3_API void* QVMemRealloc(void* block, size_t size) QVCORE3_NOEXCEPT;
QVCORE3_API void QVMemFree(void* block) QVCORE3_NOEXCEPT;

typedef void (*QVNewHandler)(void);
/* Installs handler as the C++ new-handler; returns the one it replaces. */
QVCORE3_API QVNewHandler QVSetNewHandler(QVNewHandler handler) QVCORE3_NOEXCEPT;

/* ---- synchronisation ----------------------------------------------------- */
/* name: optional label (may be null), kept for diagnostics.
   flags: reserved, pass 0 (anything else is QV_E_INVALIDARG).
   Mutexes are recursive for their owning thread. Releasing a mutex, a
   condition's lock or a reader-writer lock not held gives 0x80070001.
   Timed waits take 0xFFFFFFFF ms as "no limit" and return QV_E_TIMEOUT when
   the time runs out; try operations return QV_E_BUSY. */

QVCORE3_API QVRESULT QVMutexCreate(const char* name, uint32_t flags, QVHANDLE* handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVMutexAcquire(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVMutexTryAcquire(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVMutexRelease(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVMutexDestroy(QVHANDLE handle) QVCORE3_NOEXCEPT;

/* A condition variable with its own lock (not recursive: a second acquire by
   the holder gives 0x80070023). Waiting needs the lock held; like any
   condition variable it may wake without a signal. */
QVCORE3_API QVRESULT QVConditionCreate(const char* name, uint32_t flags, QVHANDLE* handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVConditionAcquire(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVConditionRelease(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVConditionWait(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVConditionTimedWait(QVHANDLE handle, uint32_t milliseconds) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVConditionSignal(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVConditionBroadcast(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVConditionDestroy(QVHANDLE handle) QVCORE3_NOEXCEPT;

/* Reader-writer lock. Either release ends either kind of hold: the
   thread-safe buffers take a read lock and give it back through the write
   release. */
QVCORE3_API QVRESULT QVRWLockCreate(const char* name, uint32_t flags, QVHANDLE* handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRWLockAcquireRead(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRWLockTryAcquireRead(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRWLockReleaseRead(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRWLockAcquireWrite(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRWLockTryAcquireWrite(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRWLockReleaseWrite(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRWLockDestroy(QVHANDLE handle) QVCORE3_NOEXCEPT;

/* A gate stays open, letting every waiter through, until it is closed.
   It is created closed. */
QVCORE3_API QVRESULT QVGateCreate(const char* name, uint32_t flags, QVHANDLE* handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVGateWait(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVGateTryWait(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVGateTimedWait(QVHANDLE handle, uint32_t milliseconds) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVGateOpen(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVGateClose(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVGateDestroy(QVHANDLE handle) QVCORE3_NOEXCEPT;

/* Auto-reset event: a signal releases exactly one wait, now or later. Signals
   while nobody waits do not add up. */
QVCORE3_API QVRESULT QVEventCreate(const char* name, uint32_t flags, QVHANDLE* handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVEventWait(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVEventTimedWait(QVHANDLE handle, uint32_t milliseconds) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVEventSignal(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVEventDestroy(QVHANDLE handle) QVCORE3_NOEXCEPT;

/* Counting semaphore. Wait, TryWait, Post and GetValue also accept a handle
   from QVNamedSemOpen. */
QVCORE3_API QVRESULT QVSemaphoreCreate(uint32_t initialCount, const char* name, uint32_t flags, QVHANDLE* handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSemaphoreWait(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSemaphoreTryWait(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSemaphorePost(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSemaphoreGetValue(QVHANDLE handle, int32_t* value) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSemaphoreDestroy(QVHANDLE handle) QVCORE3_NOEXCEPT;

/* Named semaphore shared between processes (created with initialCount when it
   does not exist yet, opened otherwise). */
QVCORE3_API QVRESULT QVNamedSemOpen(const char* name, uint32_t initialCount, QVHANDLE* handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVNamedSemClose(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVNamedSemUnlink(const char* name) QVCORE3_NOEXCEPT;

/* ---- threads ------------------------------------------------------------- */

typedef void* (*QVThreadEntry)(void* argument);

/* stackSize 0: the platform default; else raised to the system minimum and
   to whole pages. flags: reserved, pass 0. threadId (optional) receives the
   new thread's system id. Join's result is optional; a thread can be joined
   or detached once, and joining itself gives 0x80070023. */
QVCORE3_API QVRESULT QVThreadCreate(QVThreadEntry entry, void* argument, uint32_t flags, uint32_t stackSize,
                                    QVHANDLE* handle, uint32_t* threadId) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVThreadJoin(QVHANDLE handle, void** result) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVThreadDetach(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API uint32_t QVThreadGetCurrentId(void) QVCORE3_NOEXCEPT;
QVCORE3_API void QVThreadSleep(uint32_t milliseconds) QVCORE3_NOEXCEPT;

/* ---- processes ----------------------------------------------------------- */

/* Flags of QVProcessCreate: which of the child's standard streams get a pipe
   back to the parent. Streams without a pipe are inherited. */
#define QV_PROCESS_PIPE_STDIN 0x1u
#define QV_PROCESS_PIPE_STDOUT 0x2u
#define QV_PROCESS_PIPE_STDERR 0x4u
/* The child's standard error goes wherever its standard output goes (into
   the output pipe when there is one). Not together with
   QV_PROCESS_PIPE_STDERR (QV_E_INVALIDARG). */
#define QV_PROCESS_MERGE_STDERR 0x8u

/* The parent's ends of the child's pipes, as file descriptors usable with
   QVFileRead / QVFileWrite / QVFileClose; -1 where no pipe was asked for. The
   caller owns them. */
typedef struct STRUCT_QV_PROCESS_PIPES {
    int32_t stdinWrite;
    int32_t stdoutRead;
    int32_t stderrRead;
} STRUCT_QV_PROCESS_PIPES;

/* program: path of the executable (searched on PATH when it has no slash).
   arguments: one string split into argv[1..] by the Windows command-line
   rules; may be null. directory and environment (null-terminated array of
   "NAME=value") may be null to inherit. Never runs a shell. */
QVCORE3_API QVRESULT QVProcessCreate(const char16_t* program, const char16_t* arguments, const char16_t* directory,
                                     const char16_t* const* environment, uint32_t flags,
                                     STRUCT_QV_PROCESS_PIPES* pipes, QVHANDLE* handle) QVCORE3_NOEXCEPT;
/* Blocks until the child ends; the handle is then gone. A child killed by a
   signal reports 128 + the signal number. exitCode is optional. */
QVCORE3_API QVRESULT QVProcessJoin(QVHANDLE handle, int32_t* exitCode) QVCORE3_NOEXCEPT;
/* Never blocks: QV_S_OK with the exit code when the child has ended (the
   handle stays valid for join), QV_S_FALSE while it runs. */
QVCORE3_API QVRESULT QVProcessGetExitCode(QVHANDLE handle, int32_t* exitCode) QVCORE3_NOEXCEPT;
/* Lets the child run on unwatched; the handle is gone. A child still running
   is reaped by a background thread of this library when it ends. */
QVCORE3_API QVRESULT QVProcessDetach(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API uint32_t QVProcessGetCurrentId(void) QVCORE3_NOEXCEPT;

/* Splits a command line by the Windows rules (quotes, backslashes before
   quotes, "" inside quotes). On success *argv is an array of *argc
   NUL-terminated strings followed by a null pointer, freed with
   QVCommandLineFree. */
QVCORE3_API QVRESULT QVCommandLineSplit(const char16_t* commandLine, char16_t*** argv, int32_t* argc) QVCORE3_NOEXCEPT;
QVCORE3_API void QVCommandLineFree(char16_t** argv) QVCORE3_NOEXCEPT;

/* ---- file descriptors (pipes of child processes) ------------------------- */

/* Reads at most size bytes; *done is 0 at end of stream. Write writes all
   of data unless an error stops it (*done tells how much went out); a pipe
   whose reader has gone gives 0x80070020 (EPIPE), not a signal. A bad
   descriptor is QV_E_INVALIDARG. */
QVCORE3_API QVRESULT QVFileRead(int32_t fd, void* data, uint32_t size, uint32_t* done) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVFileWrite(int32_t fd, const void* data, uint32_t size, uint32_t* done) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVFileClose(int32_t fd) QVCORE3_NOEXCEPT;

/* ---- shared libraries ---------------------------------------------------- */

/* The handle of the shared object that contains address (for a library's own
   module handle). The same object always gives the same handle, which stays
   valid for the life of the process. */
QVCORE3_API QVRESULT QVModuleGetHandle(const void* address, QVHANDLE* module) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVModuleSetInitialized(QVHANDLE module, int32_t initialized) QVCORE3_NOEXCEPT;
QVCORE3_API int32_t QVModuleIsInitialized(QVHANDLE module) QVCORE3_NOEXCEPT;
/* module: the module asking (may be QV_INVALID_HANDLE); path is UTF-16.
   A missing file gives its errno code (QV_E_FILE_NOT_FOUND), a file that is
   no loadable object 0x800700C1, an unknown symbol 0x8007007F. */
QVCORE3_API QVRESULT QVModuleLibOpen(QVHANDLE module, const char16_t* path, QVHANDLE* library) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVLibGetSymbol(QVHANDLE library, const char16_t* name, void** address) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVModuleLibClose(QVHANDLE library) QVCORE3_NOEXCEPT;

/* ---- shared memory ------------------------------------------------------- */

#define QV_SHAREDMEM_CREATE 0x1u

/* Opens (or, with QV_SHAREDMEM_CREATE, creates when absent) a named region of
   size bytes. A region smaller than size is grown; size 0 opens an existing
   region at its size. Names of shared memory and named semaphores get a
   leading '/' when they lack one and may hold no other '/'. Unmapping when
   not mapped gives QV_E_ILLEGAL_METHOD_CALL; closing unmaps. */
QVCORE3_API QVRESULT QVSharedMemOpen(const char* name, uint32_t size, uint32_t flags, QVHANDLE* handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSharedMemMap(QVHANDLE handle, void** address) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSharedMemUnmap(QVHANDLE handle) QVCORE3_NOEXCEPT;
/* The bytes a map covers: the region's size when it was opened. */
QVCORE3_API QVRESULT QVSharedMemGetSize(QVHANDLE handle, size_t* size) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSharedMemClose(QVHANDLE handle) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSharedMemUnlink(const char* name) QVCORE3_NOEXCEPT;

/* ---- UTF-16 string primitives -------------------------------------------- */
/* Case mapping covers Basic Latin, Latin-1, Latin Extended-A/B, Greek and
   Cyrillic (with its supplement), whatever the C locale: the one-to-one
   mappings of the Unicode data, so U+00FF and U+0178 pair up, U+0130
   lower-cases to 'i' and U+0131 upper-cases to 'I' (and 'i'/'I' map to each
   other, not to the Turkish letters), final sigma lower-cases to itself and
   upper-cases to U+03A3, U+00DF has no single-unit capital and stays, and the
   micro sign U+00B5 stays. Null strings count as empty; a negative count or
   length means "to the NUL". */

QVCORE3_API int32_t QVStrLenW(const char16_t* text) QVCORE3_NOEXCEPT;
QVCORE3_API int32_t QVStrLenA(const char* text) QVCORE3_NOEXCEPT;
QVCORE3_API char16_t* QVStrCpyW(char16_t* destination, const char16_t* source) QVCORE3_NOEXCEPT;
/* Copies at most count units and pads with NULs up to count, like strncpy. */
QVCORE3_API char16_t* QVStrNCpyW(char16_t* destination, const char16_t* source, int32_t count) QVCORE3_NOEXCEPT;
/* Unit by unit as unsigned 16-bit numbers: <0, 0, >0. */
QVCORE3_API int32_t QVStrCmpW(const char16_t* a, const char16_t* b) QVCORE3_NOEXCEPT;
/* First occurrence of unit in text, or null; the terminating NUL is not found. */
QVCORE3_API const char16_t* QVStrChrW(const char16_t* text, char16_t unit) QVCORE3_NOEXCEPT;
/* Compares at most count units after lower-casing both: <0, 0, >0. */
QVCORE3_API int32_t QVStrNICmpW(const char16_t* a, const char16_t* b, int32_t count) QVCORE3_NOEXCEPT;
QVCORE3_API char16_t* QVStrToLowerW(char16_t* text) QVCORE3_NOEXCEPT;
QVCORE3_API char16_t* QVStrToUpperW(char16_t* text) QVCORE3_NOEXCEPT;
/* Same as the two above over an explicit length (the text may hold NULs). */
QVCORE3_API void QVStrToLowerNW(char16_t* text, int32_t length) QVCORE3_NOEXCEPT;
QVCORE3_API void QVStrToUpperNW(char16_t* text, int32_t length) QVCORE3_NOEXCEPT;
QVCORE3_API char16_t QVToLowerW(char16_t unit) QVCORE3_NOEXCEPT;
QVCORE3_API char16_t QVToUpperW(char16_t unit) QVCORE3_NOEXCEPT;
/* Like atoi: leading white space, optional sign, decimal digits; stops at the
   first other unit; 0 when there is no number. Overflow wraps. */
QVCORE3_API int32_t QVStrToIW(const char16_t* text) QVCORE3_NOEXCEPT;
/* Like strtoul (radix 0 or 2..36; a leading '-' negates modulo 2^32). end may
   be null. */
QVCORE3_API uint32_t QVStrToULW(const char16_t* text, const char16_t** end, int32_t radix) QVCORE3_NOEXCEPT;
/* Like strtod in the "C" locale. end may be null. */
QVCORE3_API double QVStrToDW(const char16_t* text, const char16_t** end) QVCORE3_NOEXCEPT;
/* UTF-16 to the default narrow encoding (QVGetDefaultCharEncoding's), with '?'
   for what it can't represent. length -1: NUL-terminated. Writes at most
   capacity bytes including the NUL; *written (optional) excludes the NUL.
   QV_E_BUFFER_TOO_SMALL when it does not fit: nothing is written and
   *written tells the bytes needed. Code sets other than UTF-8 and ISO-8859-1
   are written as ASCII. */
QVCORE3_API QVRESULT QVUnicodeToAnsi(const char16_t* text, int32_t length, char* destination, int32_t capacity,
                                     int32_t* written) QVCORE3_NOEXCEPT;

/* ---- encodings and time -------------------------------------------------- */

/* The process locale's code set as a codec-table name ("ASCII", "UTF-8",
   "ISO8859_1", ...), NUL-terminated into capacity units. */
QVCORE3_API QVRESULT QVGetDefaultCharEncoding(char16_t* name, int32_t capacity) QVCORE3_NOEXCEPT;

typedef struct STRUCT_QV_TIME {
    uint16_t wYear;
    uint16_t wMonth;
    uint16_t wDayOfWeek;
    uint16_t wDay;
    uint16_t wHour;
    uint16_t wMinute;
    uint16_t wSecond;
    uint16_t wMilliseconds;
} STRUCT_QV_TIME;

QVCORE3_API QVRESULT QVTimeGetLocal(STRUCT_QV_TIME* time) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVTimeGetSystem(STRUCT_QV_TIME* time) QVCORE3_NOEXCEPT;
/* Seconds since the POSIX epoch to local (local != 0) or UTC time. */
QVCORE3_API QVRESULT QVTimeFromPosix(int64_t seconds, int32_t local, STRUCT_QV_TIME* time) QVCORE3_NOEXCEPT;

/* ---- sockets ------------------------------------------------------------- */

/* errno (or the last resolver result recorded by the networking layer)
   translated into the Windows Sockets numbering. */
QVCORE3_API int32_t QVLastNativeSocketError(void) QVCORE3_NOEXCEPT;
QVCORE3_API int32_t QVSocketErrorFromErrno(int32_t error) QVCORE3_NOEXCEPT;
QVCORE3_API int32_t QVSocketErrorFromEai(int32_t eaiError) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSocketLayerStartup(void) QVCORE3_NOEXCEPT;
QVCORE3_API int32_t QVSocketLayerShutdown(void) QVCORE3_NOEXCEPT;

/* ---- files, standard streams and terminals ---------------------------------
   Files are plain descriptors, read, written and closed with QVFileRead,
   QVFileWrite and QVFileClose above. Paths are narrow (UTF-8) text as the
   file system takes it. Positions and sizes are 64-bit. */

#define QV_FILE_READ 0x01u
#define QV_FILE_WRITE 0x02u
#define QV_FILE_CREATE 0x04u     /* create when missing (mode 0666 less the umask) */
#define QV_FILE_TRUNCATE 0x08u   /* empty an existing file */
#define QV_FILE_APPEND 0x10u     /* every write goes to the current end */
#define QV_FILE_EXCLUSIVE 0x20u  /* with QV_FILE_CREATE: fail when it exists */

/* Opens a file (never a directory: that is 0x80070015, EISDIR) with the
   descriptor closed on exec. Without QV_FILE_WRITE it is opened for reading. */
QVCORE3_API QVRESULT QVFileOpen(const char* path, uint32_t flags, int32_t* fd) QVCORE3_NOEXCEPT;

#define QV_SEEK_SET 0
#define QV_SEEK_CURRENT 1
#define QV_SEEK_END 2
/* position is optional. A pipe or terminal gives 0x8007001D (ESPIPE). */
QVCORE3_API QVRESULT QVFileSeek(int32_t fd, int64_t offset, int32_t origin, int64_t* position) QVCORE3_NOEXCEPT;

#define QV_FILE_TYPE_OTHER 0u
#define QV_FILE_TYPE_REGULAR 1u
#define QV_FILE_TYPE_DIRECTORY 2u
#define QV_FILE_TYPE_CHARACTER 3u
#define QV_FILE_TYPE_PIPE 4u
#define QV_FILE_TYPE_SOCKET 5u
typedef struct STRUCT_QV_FILE_STATUS {
    int64_t size;          /* bytes, for regular files */
    int64_t modified;      /* seconds since the POSIX epoch */
    uint32_t type;         /* QV_FILE_TYPE_... */
    uint32_t permissions;  /* the nine rwx bits */
} STRUCT_QV_FILE_STATUS;
QVCORE3_API QVRESULT QVFileGetStatus(int32_t fd, STRUCT_QV_FILE_STATUS* status) QVCORE3_NOEXCEPT;

/* Bytes that can be read without blocking: what is left of a regular file,
   what a pipe, socket or terminal holds, else 0. */
QVCORE3_API QVRESULT QVFileAvailable(int32_t fd, int64_t* count) QVCORE3_NOEXCEPT;

/* The system's text for a failure code, NUL-terminated and cut to capacity.
   Called right after the failing call, it uses the thread's errno when that
   still gives the same code, so errors that share a code keep their own text
   (EIO and EACCES both give 0x80070005); otherwise the text comes from the
   code alone. */
QVCORE3_API QVRESULT QVResultGetText(QVRESULT code, char* buffer, int32_t capacity) QVCORE3_NOEXCEPT;

/* The C library's standard streams: 0 input, 1 output, 2 error. */
#define QV_STD_INPUT 0
#define QV_STD_OUTPUT 1
#define QV_STD_ERROR 2
/* One line of at most capacity - 1 bytes from standard input (fgets);
   *length is the length up to the first NUL. QV_S_FALSE when nothing was
   read. When the stream's error flag is set afterwards the result is a
   failure code (and the flag is cleared so a later read can try again). */
QVCORE3_API QVRESULT QVStdReadLine(char* buffer, int32_t capacity, int32_t* length) QVCORE3_NOEXCEPT;
/* Moves standard input by offset bytes (fseek from the current position). */
QVCORE3_API QVRESULT QVStdSeek(int64_t offset) QVCORE3_NOEXCEPT;
/* Writes to standard output or error through the C library's buffer; a
   failure (error flag set, or fewer bytes taken) is a failure code. */
QVCORE3_API QVRESULT QVStdWrite(int32_t stream, const void* data, uint32_t size) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVStdFlush(int32_t stream) QVCORE3_NOEXCEPT;

/* Turns off echo on the terminal behind fd and returns a token for
   QVTerminalRestore. QV_S_FALSE (and token -1) when fd is not a terminal.
   Until it is restored, the saved mode is also put back when SIGINT,
   SIGTERM, SIGHUP or SIGQUIT arrives, before the signal takes its former
   course, so an interrupted password prompt does not leave echo off. */
QVCORE3_API QVRESULT QVTerminalEchoOff(int32_t fd, int32_t* token) QVCORE3_NOEXCEPT;
/* Puts the saved mode back; token -1 does nothing. */
QVCORE3_API QVRESULT QVTerminalRestore(int32_t token) QVCORE3_NOEXCEPT;
/* ---- file channels ----------------------------------------------------
   Positioned reads and writes, size, truncation, syncing to the device and
   byte-range locks on a file descriptor. Positions and sizes are 64-bit.
   Locks belong to the open file (the descriptor and its duplicates), not to
   the process: two descriptors of one file exclude each other even within
   one process, and closing some other descriptor of the file releases
   nothing. Locks are advisory: they bind only processes that take them. */

#define QV_FILE_CHANNEL_READ 0x1u
#define QV_FILE_CHANNEL_WRITE 0x2u
/* Create the file when it is missing (mode 0666 less the umask). */
#define QV_FILE_CHANNEL_CREATE 0x4u
/* Cut an existing file to size 0 (needs WRITE). */
#define QV_FILE_CHANNEL_TRUNCATE 0x8u
/* Fail with QV_E_ALREADY_EXISTS when the file exists (needs CREATE). */
#define QV_FILE_CHANNEL_EXCLUSIVE 0x10u

/* path is UTF-16. The descriptor is closed with QVFileClose and is not
   inherited by child processes. Flags without READ or WRITE, or with unknown
   bits, are QV_E_INVALIDARG. */
QVCORE3_API QVRESULT QVFileChannelOpen(const char16_t* path, uint32_t flags, int32_t* fd) QVCORE3_NOEXCEPT;
/* At most size bytes from position; *done is 0 at or past the end. */
QVCORE3_API QVRESULT QVFileReadAt(int32_t fd, void* data, uint32_t size, int64_t position,
                                  uint32_t* done) QVCORE3_NOEXCEPT;
/* All of data at position unless an error stops it (*done tells how much
   went out); a full device is 0x8007001C (ENOSPC). */
QVCORE3_API QVRESULT QVFileWriteAt(int32_t fd, const void* data, uint32_t size, int64_t position,
                                   uint32_t* done) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVFileGetSize(int32_t fd, int64_t* size) QVCORE3_NOEXCEPT;
/* Cuts the file to size bytes or extends it with zeros. */
QVCORE3_API QVRESULT QVFileSetSize(int32_t fd, int64_t size) QVCORE3_NOEXCEPT;
/* Writes the file's data (and with metadata != 0 its attributes) through to
   the device. */
QVCORE3_API QVRESULT QVFileSync(int32_t fd, int32_t metadata) QVCORE3_NOEXCEPT;

#define QV_FILE_LOCK_SHARED 0x1u
/* Wait for a conflicting lock to go; without it a conflict is QV_E_BUSY. */
#define QV_FILE_LOCK_WAIT 0x2u

/* Locks length bytes from position (length 0: to the end of the file however
   far it grows). A lock over a range this descriptor already locks replaces
   it there. */
QVCORE3_API QVRESULT QVFileLock(int32_t fd, int64_t position, int64_t length, uint32_t flags) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVFileUnlock(int32_t fd, int64_t position, int64_t length) QVCORE3_NOEXCEPT;

/* ---- locale time forms --------------------------------------------------- */

/* Formats time in the process locale (strftime after start-up's setlocale):
   part QV_TIME_FORMAT_SHORTDATE ("%x"), QV_TIME_FORMAT_LONGDATE (weekday, day,
   month name and year) or QV_TIME_FORMAT_TIME ("%X"). The bytes are in the
   locale's code set, NUL-terminated in capacity bytes; written receives their
   count without the NUL. QV_E_INVALIDARG for an unknown part or a time out of
   range, 0x8007007A when the text does not fit. */
#define QV_TIME_FORMAT_TIME 0
#define QV_TIME_FORMAT_SHORTDATE 1
#define QV_TIME_FORMAT_LONGDATE 2
QVCORE3_API QVRESULT QVTimeFormat(const STRUCT_QV_TIME* time, int32_t part, char* buffer, int32_t capacity,
                                  int32_t* written) QVCORE3_NOEXCEPT;

/* ---- fault injection (test builds only) ----------------------------------
   Present when the library is built with QVCORE3_FAULT_INJECTION. An armed
   operation fails with the given code on its nth call from now (1 = the next
   call); the allocation form makes the nth QVMemAlloc/QVMemRealloc (and
   operator new, where the test installs the counting one) return null.
   Calls rejected for a bad argument or handle are not counted. The destroy,
   close and detach operations do their work before an armed failure is
   reported, so a caller's failure path can be tested without a leak. */

QVCORE3_API int32_t QVFaultInjectionAvailable(void) QVCORE3_NOEXCEPT;
/* operation: the function's name, e.g. "QVMutexCreate". code: any non-zero
   value: a failure code, or for QVSocketLayerShutdown a sockets error number. */
QVCORE3_API QVRESULT QVFaultArm(const char* operation, int32_t nth, QVRESULT code) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVFaultArmAllocation(int32_t nth) QVCORE3_NOEXCEPT;
QVCORE3_API void QVFaultDisarmAll(void) QVCORE3_NOEXCEPT;
/* Allocation hook for a test's own operator new: true when the armed
   allocation failure fires now. */
QVCORE3_API int32_t QVFaultAllocationFires(void) QVCORE3_NOEXCEPT;

/* Handles open in this process, for tests that look for leaks. */
QVCORE3_API uint32_t QVHandleCountOpen(void) QVCORE3_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
