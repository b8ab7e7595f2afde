#include "image/OldImageVersions.h"

#include <cmath>

#include "foundation/ZfADateTime.h"
#include "foundation/ZfError.h"
#include "image/ZfCRMsg.h"
#include "image/ZfRegion.h"
#include "xml/ZfBarnXml.h"

namespace qvre {

namespace {

constexpr const char* kInformations = "Informations";

std::string ReadText(ZfBarnXml& xml, const std::string& tag) {
    std::string text;
    xml.Text(tag, text, "");
    return text;
}

void LoadString(ZfBarnXml& xml, ZfDocData& data, const std::string& tag) {
    ZfDocData::SetInfoString(data.infoString, tag, ReadText(xml, tag));
}

double LoadValue(ZfBarnXml& xml, ZfDocData& data, const std::string& tag, double absent) {
    double value = absent;
    xml.Double(tag, value, absent);
    ZfDocData::SetInfoValue(data.infoValue, tag, value);
    return value;
}

void LoadTimes(ZfBarnXml& xml, ZfDocData& data) {
    ZfDocData::SetInfoString(data.infoString, "TimeBegin", ReadText(xml, "BeginTime"));
    ZfDocData::SetInfoString(data.infoString, "TimeEnd", ReadText(xml, "EndTime"));
}

std::string LoadDate(ZfBarnXml& xml, ZfDocData& data, const std::string& tag) {
    ZfADateTime date;
    xml.DateTime(tag, date);
    ZfDocData::SetInfoString(data.infoString, tag, date.ToText());
    return date.ToText();
}

/// "prefix#n#object" for the n-th pair: what it asked of the instrument, or set. A pair that did neither
/// repeats the number of the pair before it.
void FlattenPairs(const ZfCRMsgList& list, const std::string& prefix, ZfDocData& data) {
    double number = 0.0;
    std::string unit;
    for (std::size_t n = 0; n < list.pairs.size(); ++n) {
        const auto& [command, reply] = list.pairs[n];
        if (command.GetCommand() == "get") reply.GetNumericValue(number, unit);
        if (command.GetCommand() == "put") command.GetNumericValue(number, unit);
        ZfDocData::SetInfoValue(data.infoValue, prefix + "#" + std::to_string(n) + "#" + reply.GetObject(),
                                number);
    }
}

void LoadSurveyCommands(ZfBarnXml& xml, ZfDocData& data) {
    for (const std::string tag : {"CmdBeforeSurvey", "CmdAfterSurvey"}) {
        ZfCRMsgList list;
        list.Exchange(xml, tag);
        FlattenPairs(list, tag, data);
    }
}

void LoadI0Region(ZfBarnXml& xml, ZfDocData& data) {
    ZfRegion region;
    region.Exchange(xml, "I0Region");
    ZfDocData::SetInfoValue(data.infoValue, "I0Region#left", region.Left);
    ZfDocData::SetInfoValue(data.infoValue, "I0Region#bottom", region.Bottom);
    ZfDocData::SetInfoValue(data.infoValue, "I0Region#width", region.Width);
    ZfDocData::SetInfoValue(data.infoValue, "I0Region#height", region.Height);
}

void LoadI0Commands(ZfBarnXml& xml, ZfDocData& data) {
    ZfCRMsgList list;
    list.Exchange(xml, "I0Cmd");
    for (std::size_t n = 0; n < list.pairs.size(); ++n)
        ZfDocData::SetInfoString(data.infoString, "I0Cmd#" + std::to_string(n),
                                 list.pairs[n].command.CommandText());
}

/// The reference intensity: a number, and the place of an image or the commands that it was taken by.
void LoadI0(ZfBarnXml& xml, ZfDocData& data) {
    if (!xml.OpenRack("I0")) return;
    LoadValue(xml, data, "I0Value", 1.0);
    const double correction = std::trunc(LoadValue(xml, data, "I0CorrectionType", 0.0));
    if (correction == 1.0) LoadI0Region(xml, data);
    if (correction == 2.0) LoadI0Commands(xml, data);
    xml.CloseRack("I0");
}

/// The place of the image in a scan, and the command that moved the scanned axis.
void LoadScan(ZfBarnXml& xml, ZfDocData& data) {
    std::string parent;
    if (xml.Text("ParentFileName", parent, ""))
        ZfDocData::SetInfoString(data.infoString, "ParentFileName", parent);
    for (const std::string tag : {"IndexOfImage", "Index4Scan"}) {
        double index = 0.0;
        if (xml.Double(tag, index, 0.0)) ZfDocData::SetInfoValue(data.infoValue, tag, index);
    }
    ZfCRMsgPair setX;
    if (!setX.Exchange(xml, "MsgForSetX")) return;
    const ZfCRMsg& command = setX.command;
    ZfDocData::SetInfoString(data.infoString, "MsgForSetX", command.CommandText());
    ZfDocData::SetInfoString(data.infoString, "XObject", command.GetObject());
    double number = 0.0;
    std::string unit;
    if (command.GetNumericValue(number, unit))
        ZfDocData::SetInfoValue(data.infoValue, command.GetObject(), number);
}

void LoadAcquisition(ZfBarnXml& xml, ZfDocData& data) {
    LoadString(xml, data, "DataType");
    LoadString(xml, data, "Comment");
    LoadValue(xml, data, "ExposureTime", 0.0);
    LoadValue(xml, data, "Scans", 0.0);
}

void LoadSurvey(ZfBarnXml& xml, ZfDocData& data) {
    LoadSurveyCommands(xml, data);
    LoadI0(xml, data);
    LoadScan(xml, data);
}

}  // namespace

void LoadVersion0(ZfBarnXml& xml, ZfDocData& data) {
    xml.OpenRack(kInformations);
    LoadString(xml, data, "DataType");
    LoadTimes(xml, data);
    LoadString(xml, data, "Comment");
    xml.CloseRack(kInformations);

    ZfDoubleMatrix image;
    xml.Matrix("Image", image, "b");
    data.OnlyImage().Convert(image);
}

void LoadVersion2(ZfBarnXml& xml, ZfDocData& data) {
    xml.OpenRack(kInformations);
    LoadAcquisition(xml, data);
    LoadDate(xml, data, "BeginTime");
    // Files of this version tell no image format of their own; its key holds the end time.
    ZfDocData::SetInfoString(data.infoString, "ImageFormat", LoadDate(xml, data, "EndTime"));
    LoadSurvey(xml, data);
    xml.CloseRack();
    xml.Matrix("Image", data.OnlyImage(), "b");
}

void LoadVersion3(ZfBarnXml& xml, ZfDocData& data) {
    if (xml.IsWriting()) throw ZfError("Prvious format data cannot save");
    xml.OpenRack(kInformations);
    LoadAcquisition(xml, data);
    LoadTimes(xml, data);
    LoadString(xml, data, "ImageFormat");
    LoadSurvey(xml, data);
    xml.CloseRack(kInformations);
    xml.Matrix("Image", data.OnlyImage(), "b");
}

}  // namespace qvre
