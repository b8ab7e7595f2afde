#include "image/OldImageVersions.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "Samples.h"

TEST(OldImageVersions, Version0KeepsItsFourTexts) {
    ZfDocData data;
    ASSERT_TRUE(LoadText(data, SampleText(0)));
    EXPECT_TRUE(data.infoValue.empty());
    EXPECT_EQ(data.infoString, (ZfDocData::InfoString{{"DataType", {"spectrum & image"}},
                                                      {"TimeBegin", {"10:20"}},
                                                      {"TimeEnd", {"10:30"}},
                                                      {"Comment", {"first light"}}}));
}

// A get takes the number of the reply, a put that of the command; a command of another kind repeats the
// number before it, within one list, and a value without a number counts as 0.
TEST(OldImageVersions, Version2FlattensTheSurveyAndReadsDates) {
    ZfDocData data;
    ASSERT_TRUE(LoadText(data, SampleText(2)));
    EXPECT_EQ(data.infoValue, (ZfDocData::InfoValue{{"ExposureTime", {12.5}},
                                                    {"Scans", {3.0}},
                                                    {"CmdBeforeSurvey#0#Theta", {12.5}},
                                                    {"CmdBeforeSurvey#1#Shutter", {12.5}},
                                                    {"CmdBeforeSurvey#2#Phi", {-90.0}},
                                                    {"CmdBeforeSurvey#3#Name", {0.0}},
                                                    {"CmdBeforeSurvey#4#Lone", {0.0}},
                                                    {"CmdBeforeSurvey#5#", {0.0}},
                                                    {"CmdAfterSurvey#0#Shutter", {0.0}},
                                                    {"I0Value", {0.75}},
                                                    {"I0CorrectionType", {1.9}},
                                                    {"I0Region#left", {1.5}},
                                                    {"I0Region#bottom", {2.0}},
                                                    {"I0Region#width", {30.0}},
                                                    {"I0Region#height", {40.25}},
                                                    {"IndexOfImage", {4.0}}}));
    EXPECT_EQ(data.infoString, (ZfDocData::InfoString{{"DataType", {"angle scan"}},
                                                      {"Comment", {"dated times"}},
                                                      {"BeginTime", {"1998/03/05 07:08:09"}},
                                                      {"EndTime", {"1998/03/05 17:18:19"}},
                                                      {"ImageFormat", {"1998/03/05 17:18:19"}}}));
}

TEST(OldImageVersions, Version3KeepsTextTimesCommandsAndTheScan) {
    ZfDocData data;
    ASSERT_TRUE(LoadText(data, SampleText(3)));
    EXPECT_EQ(data.infoValue, (ZfDocData::InfoValue{{"ExposureTime", {0.5}},
                                                    {"Scans", {1.0}},
                                                    {"I0Value", {1.0}},
                                                    {"I0CorrectionType", {2.0}},
                                                    {"Index4Scan", {17.0}},
                                                    {"Stage", {12.5}}}));
    EXPECT_EQ(data.infoString, (ZfDocData::InfoString{{"DataType", {"angle scan"}},
                                                      {"Comment", {"text times"}},
                                                      {"TimeBegin", {"in the morning"}},
                                                      {"TimeEnd", {"in the evening"}},
                                                      {"ImageFormat", {"float 32"}},
                                                      {"I0Cmd#0", {"get/Current/nA"}},
                                                      {"I0Cmd#1", {"//"}},
                                                      {"ParentFileName", {"scan <1>"}},
                                                      {"MsgForSetX", {"put/Stage/12.5mm"}},
                                                      {"XObject", {"Stage"}}}));
}

TEST(OldImageVersions, TakeAnyCorrectionTypeButWriteNothing) {
    for (const char* type : {"1e300", "-1.5", "3", "x"}) {
        ZfDocData data;
        const std::string correction = Tag("I0", Tag("I0CorrectionType", type));
        LoadText(data, Tag("DataOfProcessImage", Tag("version", "3") + Tag("Informations", correction)));
        EXPECT_EQ(data.infoValue.size(), 4U) << type;
        EXPECT_EQ(data.infoString.count("I0Cmd#0"), 0U) << type;
        ZfBarnXml xml("w");
        EXPECT_EQ(ErrorText([&] { LoadVersion3(xml, data); }), "Prvious format data cannot save");
    }
}
