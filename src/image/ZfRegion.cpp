#include "image/ZfRegion.h"

#include "xml/ZfBarnXml.h"

bool ZfRegion::Point::Exchange(ZfBarnXml& xml, const std::string& tag) {
    if (!xml.OpenRack(tag)) return false;
    xml.Float("x", x, 0.0F);
    xml.Float("y", y, 0.0F);
    xml.CloseRack(tag);
    return true;
}

bool ZfRegion::Exchange(ZfBarnXml& xml, const std::string& tag) {
    if (!xml.OpenRack(tag)) return false;
    xml.Float("Left", Left, 0.0F);
    xml.Float("Bottom", Bottom, 0.0F);
    xml.Float("Width", Width, 0.0F);
    xml.Float("Height", Height, 0.0F);
    xml.Int32("ReginType", ReginType, 0);
    xml.Text("Name", Name, "");
    if (ReginType == kPolygon) xml.RecordList("polygon", "i", points);
    xml.CloseRack(tag);
    return true;
}
