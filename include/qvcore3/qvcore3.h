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

/* The 16-byte class and interface identifier, laid out as the component
   model's GUID; equal when all 16 bytes are. */
#ifndef QV_GUID_DEFINED
#define QV_GUID_DEFINED
typedef struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} GUID;
#endif

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
#define QV_E_INVALID_DATA ((QVRESULT)0x8007000D)
#define QV_E_PROC_NOT_FOUND ((QVRESULT)0x8007007F)
#define QV_E_NO_MORE_ITEMS ((QVRESULT)0x80070103)
#define QV_E_CLASSNOTREG ((QVRESULT)0x80040154)
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
QVCORE3_API QVRESULT QVSemaphoreCreate(uint32_t initialCount, const char* name, uint32_t flags,
                                       QVHANDLE* handle) QVCORE3_NOEXCEPT;
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

/* Flags of QVProcessCreate. Without flags each of the child's three standard
   streams gets a pipe back to the parent; an INHERIT flag leaves that stream
   to the child as the parent's own instead. */
#define QV_PROCESS_INHERIT_STDIN 0x1u
#define QV_PROCESS_INHERIT_STDOUT 0x2u
#define QV_PROCESS_INHERIT_STDERR 0x4u
/* The child's standard error gets no pipe of its own and goes wherever its
   standard output goes (into the output pipe when there is one). Not
   together with QV_PROCESS_INHERIT_STDERR (QV_E_INVALIDARG). */
#define QV_PROCESS_MERGE_STDERR 0x8u

/* The parent's ends of the child's pipes, as file descriptors usable with
   QVFileRead / QVFileWrite / QVFileClose; -1 for a stream without a pipe. The
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
                                     const char16_t* const* environment, uint32_t flags, STRUCT_QV_PROCESS_PIPES* pipes,
                                     QVHANDLE* handle) QVCORE3_NOEXCEPT;
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
QVCORE3_API QVRESULT QVSharedMemOpen(const char* name, uint32_t size, uint32_t flags,
                                     QVHANDLE* handle) QVCORE3_NOEXCEPT;
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
/* Sets the calling thread's last sockets error (Windows Sockets numbering,
   0 clears it); the next failing system call replaces it. */
QVCORE3_API void QVSetLastNativeSocketError(int32_t nativeError) QVCORE3_NOEXCEPT;
/* Records a getaddrinfo/getnameinfo result (EAI_...) as the last sockets
   error and returns its number (13001 for EAI_NONAME, ...). */
QVCORE3_API int32_t QVRecordResolverError(int32_t eaiError) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVSocketLayerStartup(void) QVCORE3_NOEXCEPT;
QVCORE3_API int32_t QVSocketLayerShutdown(void) QVCORE3_NOEXCEPT;

/* ---- files, standard streams and terminals ---------------------------------
   Files are plain descriptors, read, written and closed with QVFileRead,
   QVFileWrite and QVFileClose above. Paths are narrow (UTF-8) text as the
   file system takes it. Positions and sizes are 64-bit. */

#define QV_FILE_READ 0x01u
#define QV_FILE_WRITE 0x02u
#define QV_FILE_CREATE 0x04u    /* create when missing (mode 0666 less the umask) */
#define QV_FILE_TRUNCATE 0x08u  /* empty an existing file */
#define QV_FILE_APPEND 0x10u    /* every write goes to the current end */
#define QV_FILE_EXCLUSIVE 0x20u /* with QV_FILE_CREATE: fail when it exists */

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
    int64_t size;         /* bytes, for regular files */
    int64_t modified;     /* seconds since the POSIX epoch */
    uint32_t type;        /* QV_FILE_TYPE_... */
    uint32_t permissions; /* the nine rwx bits */
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
   byte-range locks on a descriptor from QVFileOpen (its size comes from
   QVFileGetStatus). Positions and sizes are 64-bit.
   Locks belong to the open file (the descriptor and its duplicates), not to
   the process: two descriptors of one file exclude each other even within
   one process, and closing some other descriptor of the file releases
   nothing. Locks are advisory: they bind only processes that take them. */

/* At most size bytes from position; *done is 0 at or past the end. */
QVCORE3_API QVRESULT QVFileReadAt(int32_t fd, void* data, uint32_t size, int64_t position,
                                  uint32_t* done) QVCORE3_NOEXCEPT;
/* All of data at position unless an error stops it (*done tells how much
   went out); a full device is 0x8007001C (ENOSPC). */
QVCORE3_API QVRESULT QVFileWriteAt(int32_t fd, const void* data, uint32_t size, int64_t position,
                                   uint32_t* done) QVCORE3_NOEXCEPT;
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
/* ---- processor features -------------------------------------------------- */

/* The x86-64 SHA extensions (SHA-1 and SHA-256 rounds) together with SSSE3
   and SSE4.1, which code using them also needs. */
#define QV_CPU_SHA 0x1u
/* AVX2 with BMI1, BMI2, POPCNT and LZCNT, and an operating system that saves
   the 256-bit registers (XCR0). */
#define QV_CPU_AVX2 0x2u
/* AVX-512 F, BW, VL, VBMI and VBMI2 on top of QV_CPU_AVX2, and an operating
   system that saves the 512-bit and mask registers (XCR0). */
#define QV_CPU_AVX512 0x4u

/* The QV_CPU_* extensions this processor offers. When the environment
   variable QVCL3_PORTABLE_CODE is set to anything but "" or "0", none: the
   callers then take their portable code, which is how that code is tested on
   machines that have the extensions. The processor is asked once; the
   variable at every call. */
QVCORE3_API uint32_t QVCpuFeatures(void) QVCORE3_NOEXCEPT;
/* ---- registry: the file-backed key store -------------------------------
   Keys are folders under the store directory: $QV_REGISTRY_DIR, else
   $XDG_CONFIG_HOME/qvcl3/registry, else ~/.config/qvcl3/registry, read at
   each call that starts from a root. A key path is a list of names joined by
   '\\'; a null or empty path names the parent itself. Names compare without
   regard to ASCII case and keep the case they were created with. A name that
   is empty, "." or "..", holds '/', is longer than 255 units or is not valid
   UTF-16 is refused with QV_E_INVALIDARG before anything is touched.
   Writes (creating keys, setting and deleting values, deleting keys) take an
   exclusive lock on the store, so processes may share it; a value is written
   to a temporary file, synced and renamed into place, so a reader (or a
   writer killed half-way) never sees a half-written value. A value file that
   fails its check is reported as QV_E_INVALID_DATA. A missing key or value
   is QV_E_FILE_NOT_FOUND. */

#define QV_HKEY_CLASSES_ROOT ((QVHANDLE)0x80000000)
#define QV_HKEY_CURRENT_USER ((QVHANDLE)0x80000001)
#define QV_HKEY_LOCAL_MACHINE ((QVHANDLE)0x80000002)

/* parent: a root above or an open key. Open fails for a missing key; Create
   makes what is missing (the store directory too). Close a key with
   QVRegistryCloseKey; the roots need no closing. */
QVCORE3_API QVRESULT QVRegistryOpenKey(QVHANDLE parent, const char16_t* subKey, QVHANDLE* key) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRegistryCreateKey(QVHANDLE parent, const char16_t* subKey, QVHANDLE* key) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRegistryCloseKey(QVHANDLE key) QVCORE3_NOEXCEPT;
/* Removes the key named by subKey (not empty) with all its subkeys and values,
   in one step as far as readers can tell. */
QVCORE3_API QVRESULT QVRegistryDeleteKey(QVHANDLE parent, const char16_t* subKey) QVCORE3_NOEXCEPT;
/* String values. name null or empty: the key's default value. length -1: value
   is NUL-terminated; otherwise it may hold NULs. At most 16M units. */
QVCORE3_API QVRESULT QVRegistrySetValue(QVHANDLE key, const char16_t* name, const char16_t* value,
                                        int32_t length) QVCORE3_NOEXCEPT;
/* Copies the value and a NUL into buffer (capacity units). When it does not
   fit, QV_E_BUFFER_TOO_SMALL and nothing is copied; *length (optional) is
   the value's length without the NUL either way. buffer may be null with
   capacity 0 to ask for the length. */
QVCORE3_API QVRESULT QVRegistryGetValue(QVHANDLE key, const char16_t* name, char16_t* buffer, int32_t capacity,
                                        int32_t* length) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRegistryDeleteValue(QVHANDLE key, const char16_t* name) QVCORE3_NOEXCEPT;
/* The index-th subkey or value name in ASCII-case-insensitive order (the
   default value is the empty name), NUL-terminated, with the same
   QV_E_BUFFER_TOO_SMALL rule as QVRegistryGetValue. Past the last one:
   QV_E_NO_MORE_ITEMS. */
QVCORE3_API QVRESULT QVRegistryEnumKey(QVHANDLE key, uint32_t index, char16_t* name, int32_t capacity,
                                       int32_t* length) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVRegistryEnumValue(QVHANDLE key, uint32_t index, char16_t* name, int32_t capacity,
                                         int32_t* length) QVCORE3_NOEXCEPT;

/* ---- component identifiers and creation -------------------------------- */

/* "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}": 38 units plus a NUL, upper case.
   Parsing accepts either case and nothing else (no missing braces, no
   spaces): QV_E_INVALIDARG. A capacity below 39 is QV_E_BUFFER_TOO_SMALL. */
QVCORE3_API QVRESULT QVComGUIDFromString(const char16_t* text, GUID* guid) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVComStringFromGUID(const GUID* guid, char16_t* text, int32_t capacity) QVCORE3_NOEXCEPT;
/* A random (version 4, RFC 4122 variant) identifier from the system's random
   source. */
QVCORE3_API QVRESULT QVComCreateGUID(GUID* guid) QVCORE3_NOEXCEPT;

/* What a component module exports (C linkage, these names). */
typedef QVRESULT (*QVDllGetClassObjectFunction)(const GUID* clsid, const GUID* iid, void** object);
typedef QVRESULT (*QVDllCanUnloadNowFunction)(void);
typedef QVRESULT (*QVDllRegisterServerFunction)(void);

/* The class identifier of a ProgID registered under the classes root: the
   default value of ProgID\\CLSID, following ProgID\\CurVer first when the
   ProgID is version-independent. Unknown ProgID: QV_E_CLASSNOTREG. */
QVCORE3_API QVRESULT QVComClassIDFromProgID(const char16_t* progId, GUID* clsid) QVCORE3_NOEXCEPT;
/* Creates an object of a registered class: the module named by
   CLSID\\{clsid}\\InprocServer32 is loaded once and kept, its
   DllGetClassObject gives the class factory, and the factory's CreateInstance
   (outer, iid) gives *object. module: the module asking (may be
   QV_INVALID_HANDLE). No such class key or no InprocServer32:
   QV_E_CLASSNOTREG; a module that cannot be loaded: the code of
   QVModuleLibOpen; no DllGetClassObject: QV_E_PROC_NOT_FOUND; otherwise the
   module's own code (QV_E_CLASSNOTAVAILABLE when it lacks the class). */
QVCORE3_API QVRESULT QVModuleComCreateObject(QVHANDLE module, const GUID* clsid, void* outer, const GUID* iid,
                                             void** object) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVComCreateObjectByProgID(const char16_t* progId, void* outer, const GUID* iid,
                                               void** object) QVCORE3_NOEXCEPT;
/* Unloads every module that QVModuleComCreateObject loaded and whose
   DllCanUnloadNow now returns 0; nothing is ever unloaded otherwise. *freed
   (optional): how many went. */
QVCORE3_API QVRESULT QVComFreeUnusedLibraries(uint32_t* freed) QVCORE3_NOEXCEPT;
/* The file of a module handle (from QVModuleGetHandle), NUL-terminated, with
   the QV_E_BUFFER_TOO_SMALL rule of QVRegistryGetValue. */
QVCORE3_API QVRESULT QVModuleGetFileName(QVHANDLE module, char16_t* path, int32_t capacity,
                                         int32_t* length) QVCORE3_NOEXCEPT;
/* ---- files by path ------------------------------------------------------- */
/* Paths are narrow text as the file system takes it; files are opened with
   QVFileOpen and forced to disk with QVFileSync above. */

typedef struct {
    int64_t size;
    int64_t modifiedNanoseconds; /* since the POSIX epoch */
    uint32_t mode;               /* permission bits */
    int32_t isDirectory;
} STRUCT_QV_PATH_STATUS;

/* Follows symbolic links. */
QVCORE3_API QVRESULT QVPathGetStatus(const char* path, STRUCT_QV_PATH_STATUS* status) QVCORE3_NOEXCEPT;
/* The path with every symbolic link followed, when it exists; else the path
   itself. QV_E_BUFFER_TOO_SMALL when capacity is too small. */
QVCORE3_API QVRESULT QVPathResolve(const char* path, char* resolved, uint32_t capacity) QVCORE3_NOEXCEPT;
/* Replaces to with from in one step (both in one file system). */
QVCORE3_API QVRESULT QVPathRename(const char* from, const char* to) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVPathRemove(const char* path) QVCORE3_NOEXCEPT;
/* Creates and opens a new file named prefix + six random characters; its name
   is written to created (capacity bytes with the NUL). */
QVCORE3_API QVRESULT QVPathCreateTemporary(const char* prefix, char* created, uint32_t capacity,
                                           int32_t* fd) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVFileSetMode(int32_t fd, uint32_t mode) QVCORE3_NOEXCEPT;

/* ---- environment and locales ---------------------------------------------
   Locale names are as the C library takes them ("de_DE.UTF-8", "C"). Texts
   are UTF-8, NUL-terminated into capacity bytes; *length (optional) excludes
   the NUL. When the text does not fit, QV_E_BUFFER_TOO_SMALL and *length
   tells the bytes needed. */

/* S_FALSE (1) with an empty text when the variable is unset. */
QVCORE3_API QVRESULT QVGetEnvironmentVariable(const char* name, char* value, int32_t capacity,
                                              int32_t* length) QVCORE3_NOEXCEPT;
/* The locale messages are shown in: the first set, non-empty one of LC_ALL,
   LC_MESSAGES and LANG; "C" when none is. */
QVCORE3_API QVRESULT QVGetMessagesLocaleName(char* name, int32_t capacity, int32_t* length) QVCORE3_NOEXCEPT;
/* The locales the C library can open: each name followed by a NUL, the list
   by a second NUL. */
QVCORE3_API QVRESULT QVGetAvailableLocales(char* names, int32_t capacity, int32_t* length) QVCORE3_NOEXCEPT;

typedef struct tagQV_NUMERIC_FORMAT {
    char decimalPoint[8];       /* UTF-8 */
    char thousandsSeparator[8]; /* UTF-8; empty: no grouping */
    char grouping[8];           /* as localeconv's grouping */
} STRUCT_QV_NUMERIC_FORMAT;

/* Opens locale (tried as given, then with ".UTF-8" and ".utf8" appended so
   that UTF-8 forms are preferred) and fills format. A locale that is not
   installed gives 0x80070002 (not found). */
QVCORE3_API QVRESULT QVGetLocaleNumericFormat(const char* locale, STRUCT_QV_NUMERIC_FORMAT* format) QVCORE3_NOEXCEPT;

#define QV_LOCALE_DATE_FORMAT 1      /* nl_langinfo D_FMT */
#define QV_LOCALE_TIME_FORMAT 2      /* T_FMT */
#define QV_LOCALE_DATE_TIME_FORMAT 3 /* D_T_FMT */
/* The strftime pattern of a locale for the item above. */
QVCORE3_API QVRESULT QVGetLocaleTimeFormat(const char* locale, int32_t item, char* pattern, int32_t capacity,
                                           int32_t* length) QVCORE3_NOEXCEPT;
/* strftime_l of pattern in locale for seconds since 1970-01-01 UTC, shown in
   UTC (utc non-zero) or in the local time zone. */
QVCORE3_API QVRESULT QVFormatTimeLocale(const char* locale, const char* pattern, int64_t seconds, int32_t utc,
                                        char* text, int32_t capacity, int32_t* length) QVCORE3_NOEXCEPT;

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

/* ---- writes to descriptors known not to raise SIGPIPE -------------------- */

/* *result 1 when fd is a pipe or a socket (a write to it may raise SIGPIPE,
   which QVFileWrite guards against), 0 otherwise. The kind of a descriptor
   does not change while it stays open, so a caller that opened a file and
   keeps it can ask once and then use QVFileWriteUnguarded, which is
   QVFileWrite without the status call that decides on the guard. A write
   through it to a pipe or socket whose reader has gone raises SIGPIPE. */
QVCORE3_API QVRESULT QVFileIsPipeOrSocket(int32_t fd, int32_t* result) QVCORE3_NOEXCEPT;
QVCORE3_API QVRESULT QVFileWriteUnguarded(int32_t fd, const void* data, uint32_t size, uint32_t* done) QVCORE3_NOEXCEPT;

/* ---- UTF-16 scans ------------------------------------------------------- */

/* The first unit of the NUL-terminated text equal to unit, or its
   terminating NUL when none is: a pointer into text, which must not be null.
   The result of a unit-by-unit loop, found a block of units at a time: the
   blocks are aligned, so a read may reach past the terminator but never onto
   another page. */
QVCORE3_API const char16_t* QVStrFindUnitOrEndW(const char16_t* text, char16_t unit) QVCORE3_NOEXCEPT;

/* ---- run-time type relations ------------------------------------------- */

/* *result 1 when an object whose most-derived object starts at object and
   whose dynamic type is the run-time type descriptor derivedType (a
   std::type_info) can be reached as a public, unambiguous baseType, 0
   otherwise: what a dynamic_cast to baseType would decide, asked with
   descriptors alone. Reading a class hierarchy from its descriptors is the
   C++ run time's own business, hence here. */
QVCORE3_API QVRESULT QVTypeIsBaseOf(const void* baseType, const void* derivedType, const void* object,
                                    int32_t* result) QVCORE3_NOEXCEPT;

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
