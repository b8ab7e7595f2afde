#pragma once

/// Polled by long calculations, also from the threads of a parallel loop; true makes the calculation return
/// at once and keep what it has, so that a front end can stop a run.
class ZfNotifyTerminate {
public:
    ZfNotifyTerminate() = default;
    ZfNotifyTerminate(const ZfNotifyTerminate&) = delete;
    ZfNotifyTerminate& operator=(const ZfNotifyTerminate&) = delete;
    virtual ~ZfNotifyTerminate() = default;

    virtual bool IsTerminated() = 0;
};

/// For a console run, which is stopped by ending the process.
class ZfNotifyTerminateThreadCalculation final : public ZfNotifyTerminate {
public:
    bool IsTerminated() override { return false; }
};
