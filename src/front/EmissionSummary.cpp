#include "front/EmissionSummary.h"

#include <fmt/format.h>

#include <cstddef>

#include "foundation/Constants.h"
#include "scattering/SphericalHarmonics.h"
#include "scattering/ZfFreeElectron.h"

namespace qvre {

std::string EnergyText(double kinetic_eV) {
    ZfFreeElectron electron;
    electron.SetEnergy_eV(kinetic_eV);
    const double k = electron.k * 1e-10;
    return fmt::format("  kinetic energy   {:g} eV, k = {:.4f} /angstrom, wavelength {:.4f} angstrom\n",
                       kinetic_eV, k, kTwoPi / k);
}

std::string ZeroText(double zero_eV) {
    return fmt::format("  muffin-tin zero  {:.3f} eV against the vacuum\n", zero_eV);
}

std::string ChannelText(const Emission& emission) {
    const DipoleChannels& channels = emission.source.channels;
    std::string text;
    for (std::size_t i = channels.l0 == 0 ? 1 : 0; i < 2; ++i)
        text += fmt::format("  l = {}            radial integral {:.5g} bohr^(5/2), phase {:.3f} degrees\n",
                            channels.l0 + 2 * static_cast<int>(i) - 1, channels.rho[i],
                            Degrees(channels.delta[i]));
    text += fmt::format("  asymmetry        beta = {:.3f}\n", channels.Beta());
    return text + fmt::format("  orbital          calculated at {:.1f} eV below the vacuum\n",
                              -emission.orbital.energy * kHartree_eV);
}

std::string CrossSectionText(const EmissionRequest& request, double photon_eV) {
    const double sigma = CrossSection_Mb(request.atom, request.core, request.level, photon_eV);
    if (sigma == 0.0) return "";
    return fmt::format("  cross section    {:.4g} Mb, of the free atom at a photon energy of {:.1f} eV\n",
                       sigma, photon_eV);
}

}  // namespace qvre
