#pragma once

#include "image/ZfDocData.h"

namespace qvre {

/// Readers of the image files that an acquisition program wrote: what their block "Informations" tells
/// becomes entries of the information tables, and their one image that at channel 0. The records of a survey,
/// which are dialogues with an instrument, are flattened into numbers and texts.
///
/// Called inside the root element; nothing of this is ever written. A missing element gives its default, but
/// versions 0 and 3 throw ZfError without "Informations", and all throw on a text that is no date where one
/// is due.
void LoadVersion0(ZfBarnXml& xml, ZfDocData& data);
void LoadVersion2(ZfBarnXml& xml, ZfDocData& data);
void LoadVersion3(ZfBarnXml& xml, ZfDocData& data);  ///< throws ZfError for a document to be written

}  // namespace qvre
