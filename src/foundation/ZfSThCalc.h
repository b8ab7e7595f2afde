#pragma once

#include <cstdint>
#include <string>

/// Base of a calculation that can be driven step by step. It starts no thread.
class ZfSThCalc {
public:
    ZfSThCalc() = default;
    ZfSThCalc(const ZfSThCalc&) = default;
    ZfSThCalc& operator=(const ZfSThCalc&) = default;
    virtual ~ZfSThCalc() = default;

    virtual std::int32_t State() { return state; }
    virtual void Run() = 0;
    virtual std::intptr_t Result() = 0;  ///< each class says what it is
    virtual std::string Name() { return {}; }

    std::int32_t state = 0;
    std::int32_t stop = 0;
};

/// Base of a calculation that runs as one piece of work.
class ZfCustomCalcWork {
public:
    ZfCustomCalcWork() = default;
    ZfCustomCalcWork(const ZfCustomCalcWork&) = default;
    ZfCustomCalcWork& operator=(const ZfCustomCalcWork&) = default;
    virtual ~ZfCustomCalcWork() = default;

    virtual void Run() = 0;
};
