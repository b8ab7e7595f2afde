#include "crystal/ParserFunc.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "foundation/Constants.h"

namespace qvre {

namespace {

class ZfParserPOW final : public ZfParserFunc2 {
public:
    std::string Name() const override { return "pow"; }
    std::string Usage() const override { return "pow(x,y): return x^y"; }
    double Calculate() override { return std::pow(parameters[0], parameters[1]); }
};

class ZfParserFABS final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "fabs"; }
    std::string Usage() const override { return "fabs(x): absolute value"; }
    double Calculate() override { return std::fabs(parameters[0]); }
};

class ZfParserRAND final : public ZfParserFunc0 {
public:
    std::string Name() const override { return "rand"; }
    std::string Usage() const override { return "rand(): random value"; }
    double Calculate() override { return static_cast<double>(std::rand()); }
};

class ZfParserSQRT final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "sqrt"; }
    std::string Usage() const override { return "sqrt(x): square root"; }
    double Calculate() override { return std::sqrt(parameters[0]); }
};

class ZfParserMAX final : public ZfParserFunc2 {
public:
    std::string Name() const override { return "max"; }
    std::string Usage() const override { return "max(x,y):return maximum value in x and y"; }
    double Calculate() override { return std::max(parameters[0], parameters[1]); }
};

class ZfParserMIN final : public ZfParserFunc2 {
public:
    std::string Name() const override { return "min"; }
    std::string Usage() const override { return "min(x,y): return minimum value in x and y"; }
    double Calculate() override { return std::min(parameters[0], parameters[1]); }
};

class ZfParserSIN final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "sin"; }
    std::string Usage() const override { return "sin(x_rad)"; }
    double Calculate() override { return std::sin(parameters[0]); }
};

class ZfParserCOS final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "cos"; }
    std::string Usage() const override { return "cos(x_rad)"; }
    double Calculate() override { return std::cos(parameters[0]); }
};

class ZfParserTAN final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "tan"; }
    std::string Usage() const override { return "tan(x_rad)"; }
    double Calculate() override { return std::tan(parameters[0]); }
};

class ZfParserPI final : public ZfParserFunc0 {
public:
    std::string Name() const override { return "pi"; }
    std::string Usage() const override { return "pi():return PI"; }
    double Calculate() override { return kPi; }
};

class ZfParserEXP final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "exp"; }
    std::string Usage() const override { return "exp(x)"; }
    double Calculate() override { return std::exp(parameters[0]); }
};

class ZfParserLN final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "ln"; }
    std::string Usage() const override { return "ln(x): x>0"; }
    double Calculate() override {
        if (parameters[0] <= 0.0) throw ZfError("ln(x): bad parameter x<=0");
        return std::log(parameters[0]);
    }
};

class ZfParserLOG10 final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "log10"; }
    std::string Usage() const override { return "log10(x): x>0"; }
    double Calculate() override {
        if (parameters[0] <= 0.0) throw ZfError("log10(x): bad parameter x<=0");
        return std::log10(parameters[0]);
    }
};

class ZfParserACOS final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "acos"; }
    std::string Usage() const override { return "acos(x): -1<=x<=1"; }
    double Calculate() override {
        return parameters[0] >= -1.0 && parameters[0] <= 1.0 ? std::acos(parameters[0]) : 0.0;
    }
};

class ZfParserASIN final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "asin"; }
    std::string Usage() const override { return "asin(x): -1<=x<=1"; }
    double Calculate() override {
        return parameters[0] >= -1.0 && parameters[0] <= 1.0 ? std::asin(parameters[0]) : 0.0;
    }
};

class ZfParserATAN final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "atan"; }
    std::string Usage() const override { return "atan(x)"; }
    double Calculate() override { return std::atan(parameters[0]); }
};

class ZfParserATAN2 final : public ZfParserFunc2 {
public:
    std::string Name() const override { return "atan2"; }
    std::string Usage() const override { return "atan2(y,x)"; }
    double Calculate() override { return std::atan2(parameters[0], parameters[1]); }
};

class ZfParserSINH final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "sinh"; }
    std::string Usage() const override { return "sinh(x)"; }
    double Calculate() override { return std::sinh(parameters[0]); }
};

class ZfParserCOSH final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "cosh"; }
    std::string Usage() const override { return "cosh(x)"; }
    double Calculate() override { return std::cosh(parameters[0]); }
};

class ZfParserTANH final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "tanh"; }
    std::string Usage() const override { return "tanh(x)"; }
    double Calculate() override { return std::tanh(parameters[0]); }
};

class ZfParserRADIAN final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "radian"; }
    std::string Usage() const override { return "radian(x_degree)"; }
    double Calculate() override { return Radians(parameters[0]); }
};

class ZfParserDEGREE final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "degree"; }
    std::string Usage() const override { return "degree(x_radian)"; }
    double Calculate() override { return Degrees(parameters[0]); }
};

class ZfParserSTEP final : public ZfParserFunc1 {
public:
    std::string Name() const override { return "step"; }
    std::string Usage() const override { return "step(x): return 0(x<0), 1(x>=0)"; }
    double Calculate() override { return parameters[0] < 0.0 ? 0.0 : 1.0; }
};

template <class Function>
void Register(ParserFuncTable& table) {
    auto function = std::make_unique<Function>();
    const std::string name = function->Name();
    table.emplace(name, std::move(function));
}

}  // namespace

ParserFuncTable MakeParserFuncTable() {
    ParserFuncTable table;
    Register<ZfParserPOW>(table);
    Register<ZfParserFABS>(table);
    Register<ZfParserRAND>(table);
    Register<ZfParserSQRT>(table);
    Register<ZfParserMAX>(table);
    Register<ZfParserMIN>(table);
    Register<ZfParserSIN>(table);
    Register<ZfParserCOS>(table);
    Register<ZfParserTAN>(table);
    Register<ZfParserPI>(table);
    Register<ZfParserEXP>(table);
    Register<ZfParserLN>(table);
    Register<ZfParserLOG10>(table);
    Register<ZfParserACOS>(table);
    Register<ZfParserASIN>(table);
    Register<ZfParserATAN>(table);
    Register<ZfParserATAN2>(table);
    Register<ZfParserSINH>(table);
    Register<ZfParserCOSH>(table);
    Register<ZfParserTANH>(table);
    Register<ZfParserRADIAN>(table);
    Register<ZfParserDEGREE>(table);
    Register<ZfParserSTEP>(table);
    return table;
}

}  // namespace qvre
