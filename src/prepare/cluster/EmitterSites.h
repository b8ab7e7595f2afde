#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "prepare/cluster/ClusterRequest.h"
#include "prepare/cluster/SurfaceFrame.h"

namespace qvre {

/// An atom of the cell in one layer.
struct EmitterSite {
    std::size_t atom = 0;  ///< index in the cell
    int layer = 1;
    CrystalBounds bounds;
    int weight = 1;  ///< how many such atoms the layer of a cell has, which differ by translations
};

/// Throws ZfError for a number that no layer has.
void CheckLayer(int layer);

/// What becomes of atoms that translations of the crystal bring to coincide: one stands for all, or each is
/// an emitter, as translations may be lost when atoms move.
enum class EqualEmitters : std::uint8_t { kJoined, kKept };

/// The emitters that a request asks for, by layer, then by atom. Throws ZfError, with what there is, when an
/// element, a site or a layer does not exist.
std::vector<EmitterSite> FindEmitters(const ClusterRequest& request, const SurfaceFrame& frame,
                                      EqualEmitters equal = EqualEmitters::kJoined);

}  // namespace qvre
