#ifndef QVCORE3_SRC_FAULTINJECTION_H
#define QVCORE3_SRC_FAULTINJECTION_H

#include <qvcore3/qvcore3.h>

#include <atomic>
#include <cstdint>

// Every operation a test may make fail by name through QVFaultArm.
// clang-format off
#define QVCORE3_FAULT_OPERATIONS(X) \
    X(QVMutexCreate) X(QVMutexAcquire) X(QVMutexTryAcquire) X(QVMutexRelease) X(QVMutexDestroy) \
    X(QVConditionCreate) X(QVConditionAcquire) X(QVConditionRelease) X(QVConditionWait) \
    X(QVConditionTimedWait) X(QVConditionSignal) X(QVConditionBroadcast) X(QVConditionDestroy) \
    X(QVRWLockCreate) X(QVRWLockAcquireRead) X(QVRWLockTryAcquireRead) X(QVRWLockReleaseRead) \
    X(QVRWLockAcquireWrite) X(QVRWLockTryAcquireWrite) X(QVRWLockReleaseWrite) X(QVRWLockDestroy) \
    X(QVGateCreate) X(QVGateWait) X(QVGateTryWait) X(QVGateTimedWait) X(QVGateOpen) X(QVGateClose) \
    X(QVGateDestroy) X(QVEventCreate) X(QVEventWait) X(QVEventTimedWait) X(QVEventSignal) \
    X(QVEventDestroy) X(QVSemaphoreCreate) X(QVSemaphoreWait) X(QVSemaphoreTryWait) \
    X(QVSemaphorePost) X(QVSemaphoreGetValue) X(QVSemaphoreDestroy) X(QVNamedSemOpen) \
    X(QVNamedSemClose) X(QVNamedSemUnlink) X(QVThreadCreate) X(QVThreadJoin) X(QVThreadDetach) \
    X(QVProcessCreate) X(QVProcessJoin) X(QVProcessGetExitCode) X(QVProcessDetach) \
    X(QVCommandLineSplit) X(QVFileRead) X(QVFileWrite) X(QVFileClose) X(QVModuleGetHandle) \
    X(QVModuleSetInitialized) X(QVModuleLibOpen) X(QVLibGetSymbol) X(QVModuleLibClose) \
    X(QVSharedMemOpen) X(QVSharedMemMap) X(QVSharedMemUnmap) X(QVSharedMemClose) \
    X(QVSharedMemUnlink) X(QVUnicodeToAnsi) X(QVGetDefaultCharEncoding) X(QVTimeGetLocal) \
    X(QVTimeGetSystem) X(QVTimeFromPosix) X(QVTimeFormat) X(QVSocketLayerStartup) \
    X(QVSocketLayerShutdown) X(QVFileOpen) X(QVFileSeek) X(QVFileGetStatus) X(QVFileAvailable) \
    X(QVStdReadLine) X(QVStdSeek) X(QVStdWrite) X(QVStdFlush) X(QVTerminalEchoOff) \
    X(QVTerminalRestore) X(QVFileReadAt) X(QVFileWriteAt) X(QVFileSetSize) X(QVFileSync) \
    X(QVFileLock) X(QVPathGetStatus) X(QVPathRename) X(QVPathCreateTemporary)
// clang-format on

namespace qvcore3 {

enum class FaultOp : uint16_t {
#define QVCORE3_FAULT_ENUM(name) name,
    QVCORE3_FAULT_OPERATIONS(QVCORE3_FAULT_ENUM)
#undef QVCORE3_FAULT_ENUM
        Count
};

#ifdef QVCORE3_FAULT_INJECTION
extern std::atomic<int32_t> g_faultsArmed;
extern std::atomic<int32_t> g_allocationArmed;
QVRESULT FaultFire(FaultOp op) noexcept;
bool AllocationFaultFire() noexcept;

// One relaxed load when nothing is armed.
inline QVRESULT FaultCheck(FaultOp op) noexcept
{
    return g_faultsArmed.load(std::memory_order_relaxed) != 0 ? FaultFire(op) : QV_S_OK;
}
inline bool AllocationFaultCheck() noexcept
{
    return g_allocationArmed.load(std::memory_order_relaxed) != 0 && AllocationFaultFire();
}
#else
inline QVRESULT FaultCheck(FaultOp) noexcept
{
    return QV_S_OK;
}
inline bool AllocationFaultCheck() noexcept
{
    return false;
}
#endif

} // namespace qvcore3

// Returns the armed code from the enclosing function when the fault fires.
#define QV_FAULT_POINT(op)                                                                                             \
    do {                                                                                                               \
        const QVRESULT qvFault_ = ::qvcore3::FaultCheck(::qvcore3::FaultOp::op);                                       \
        if (qvFault_ != QV_S_OK) {                                                                                     \
            return qvFault_;                                                                                           \
        }                                                                                                              \
    } while (0)

#endif
