#include "prepare/cluster/ExpressionCell.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>

#include "crystal/ZfParser.h"
#include "foundation/Constants.h"
#include "foundation/StrictNumber.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

/// Exact at the angles of cubic and hexagonal cells, so that equivalent atoms keep equal coordinates.
double CosOfDegrees(double angle) {
    if (angle == 90.0) return 0.0;
    if (angle == 120.0) return -0.5;
    if (angle == 60.0) return 0.5;
    return std::cos(Radians(angle));
}

/// A name without brackets would read as a parameter, which is 0, and rand() differs from run to run.
void RefuseNames(const std::vector<ParserToken>& tokens, const NamedConstants& constants) {
    for (const ParserToken& token : tokens) {
        if (token.code == kTokenParameter && !constants.contains(token.text))
            throw ZfError("unknown name " + token.text);
        if (token.code == kTokenFunction && token.text == "rand") throw ZfError("rand() gives no crystal");
    }
}

bool EndsOperand(std::int32_t code) {
    return code == kTokenConstant || code == kTokenParameter || code == kTokenRightBracket;
}

bool BeginsOperand(std::int32_t code) {
    return code == kTokenConstant || code == kTokenParameter || code == kTokenFunction ||
           code == kTokenLeftBracket;
}

/// Of "1/2 3" or "2(3)" the parser would take the last value.
void RefuseNeighbours(const std::vector<ParserToken>& tokens) {
    for (std::size_t i = 1; i < tokens.size(); ++i)
        if (EndsOperand(tokens[i - 1].code) && BeginsOperand(tokens[i].code))
            throw ZfError("an operator is missing");
}

double EvaluateChecked(const std::string& text, const NamedConstants& constants) {
    ZfParser parser;
    parser.constants = constants;
    parser.lexer.Lex(text);
    RefuseNames(parser.lexer.tokens, constants);
    RefuseNeighbours(parser.lexer.tokens);
    const double value = parser.Calculate(text);
    if (static_cast<std::size_t>(parser.tokenIndex) < parser.lexer.tokens.size())
        throw ZfError("it goes on behind its end");
    if (!std::isfinite(value)) throw ZfError("not finite");
    return value;
}

std::vector<double> EvaluateFields(const std::vector<std::string>& fields, const NamedConstants& constants) {
    if (fields.size() != 4) throw ZfError(fields[0] + " needs three values");
    std::vector<double> values;
    for (std::size_t i = 1; i < fields.size(); ++i)
        values.push_back(EvaluateExpression(fields[i], constants));
    return values;
}

void ReadLengths(ZfCrystal& crystal, const std::vector<std::string>& fields) {
    const std::vector<double> lengths = EvaluateFields(fields, crystal.constants);
    std::copy(lengths.begin(), lengths.end(), crystal.latticeConstants.begin());
    for (const double length : lengths)
        if (!(length > 0.0)) throw ZfError("lengths have to be above 0 angstrom");
}

void ReadAngles(ZfCrystal& crystal, const std::vector<std::string>& fields) {
    const std::vector<double> angles = EvaluateFields(fields, crystal.constants);
    crystal.axisDirections = AxisDirections(angles[0], angles[1], angles[2]);
}

/// The atom's displacement; 0 when the line has none.
double ReadAtom(ZfCrystal& crystal, const std::vector<std::string>& fields) {
    if (fields.size() != 5 && fields.size() != 6)
        throw ZfError("atom needs an element, three coordinates and, if known, Uiso");
    for (std::size_t i = 2; i < 5; ++i) EvaluateExpression(fields[i], crystal.constants);
    crystal.AddAtom(fields[2], fields[3], fields[4], fields[1], 0, 0.0);
    return fields.size() == 6 ? StrictNumber(fields[5], "Uiso") : 0.0;
}

void ReadLine(ZfCrystal& crystal, std::vector<double>& Uiso_angstrom2, const std::string& line) {
    std::istringstream stream(line.substr(0, line.find('#')));  // commas belong to the expressions
    const std::vector<std::string> fields{std::istream_iterator<std::string>(stream), {}};
    if (fields.empty()) return;
    if (fields[0] == "lengths") {
        ReadLengths(crystal, fields);
    } else if (fields[0] == "angles") {
        ReadAngles(crystal, fields);
    } else if (fields[0] == "atom") {
        Uiso_angstrom2.push_back(ReadAtom(crystal, fields));
    } else {
        throw ZfError("a line begins with lengths, angles or atom");
    }
}

}  // namespace

double EvaluateExpression(const std::string& text, const NamedConstants& constants) {
    const std::string where = "Cannot evaluate \"" + text + "\"";
    try {
        return EvaluateChecked(text, constants);
    } catch (const ZfError& error) {
        throw ZfError(where + ": " + error.message);
    } catch (const char*) {  // the lexer's, in another encoding
        throw ZfError(where + ": unexpected character");
    }
}

std::array<ZfLDoubleMatrix, 3> AxisDirections(double alpha_deg, double beta_deg, double gamma_deg) {
    for (const double angle : {alpha_deg, beta_deg, gamma_deg})
        if (!(angle > 0.0 && angle < 180.0)) throw ZfError("cell angles lie between 0 and 180 degrees");
    const double cosAlpha = CosOfDegrees(alpha_deg);
    const double cosBeta = CosOfDegrees(beta_deg);
    const double cosGamma = CosOfDegrees(gamma_deg);
    const double sinGamma = std::sqrt(1.0 - cosGamma * cosGamma);
    const double y = (cosAlpha - cosBeta * cosGamma) / sinGamma;
    const double zSquared = 1.0 - cosBeta * cosBeta - y * y;
    if (!(zSquared > 0.0)) throw ZfError("no cell has these angles");
    return {Vector3(1.0, 0.0, 0.0), Vector3(cosGamma, sinGamma, 0.0),
            Vector3(cosBeta, y, std::sqrt(zSquared))};
}

CrystalCell CellOfCrystal(const ZfCrystal& crystal) {
    ZfCrystal built = crystal;
    for (std::size_t i = 0; i < 3; ++i)  // the axes themselves: the basis is that of the whole cell
        built.SetLatticeVector(i, i == 0 ? "1" : "0", i == 1 ? "1" : "0", i == 2 ? "1" : "0");
    built.Build();
    CrystalCell cell;
    for (int i = 0; i < 3; ++i)
        for (int row = 0; row < 3; ++row)
            cell.axes[row][i] = built.axes.at(static_cast<std::size_t>(i)).VectorAt(row);
    for (const ZfAtomAttr& atom : built.atoms) {
        std::array<double, 3> fraction = {};
        for (std::size_t i = 0; i < 3; ++i)
            fraction.at(i) = EvaluateExpression(atom.coordinates.at(i), crystal.constants);
        cell.atoms.push_back({atom.element, gemmi::Vec3(fraction[0], fraction[1], fraction[2])});
    }
    return cell;
}

gemmi::Mat33 AxesOf(const std::array<double, 3>& lengths_angstrom, const std::array<double, 3>& angles_deg) {
    ZfCrystal crystal;
    crystal.latticeConstants = lengths_angstrom;
    crystal.axisDirections = AxisDirections(angles_deg[0], angles_deg[1], angles_deg[2]);
    return CellOfCrystal(crystal).axes;
}

CrystalCell ParseExpressionCell(const std::string& text, const NamedConstants& constants) {
    ZfCrystal crystal;
    crystal.constants = constants;
    crystal.SetUnitAxes();
    std::vector<double> Uiso_angstrom2;
    for (const std::string& line : LineSplit(text)) {
        try {
            ReadLine(crystal, Uiso_angstrom2, line);
        } catch (const ZfError& error) {
            throw ZfError("in the line \"" + line + "\": " + error.message);
        }
    }
    if (crystal.latticeConstants[0] == 0.0) throw ZfError("a line \"lengths a b c\" is missing");
    CrystalCell cell = CellOfCrystal(crystal);
    for (std::size_t i = 0; i < Uiso_angstrom2.size(); ++i) cell.atoms[i].Uiso_angstrom2 = Uiso_angstrom2[i];
    return cell;
}

}  // namespace qvre
