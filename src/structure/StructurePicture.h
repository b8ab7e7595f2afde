#pragma once

#include <string>
#include <vector>

#include "input/Cluster.h"
#include "prepare/cluster/CrystalCell.h"

namespace qvre {

class Canvas;

/// A surface seen from above and, below it, from the side, on one page of a canvas. The view is that along
/// the shorter translation of the surface, which points up in the view from above; the cell is drawn there.
/// Layers have their distances beside them. Deeper atoms are paler. Throws ZfError without atoms.
void DrawSurface(const CrystalCell& cell, const std::string& title, Canvas& canvas);

/// The same of the atoms of a cluster, whose x points to the right and y up in the view from above. The
/// emitter has a ring.
void DrawClusterViews(const Structure& structure, const std::string& title, Canvas& canvas);

}  // namespace qvre
