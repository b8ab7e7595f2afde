#include <gtest/gtest.h>

#include <filesystem>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Console.h"
#include "foundation/Constants.h"
#include "report/SphereFunctions.h"
#include "report/compare/MeasuredPattern.h"
#include "report/export/ImageExport.h"
#include "report/export/WaveExport.h"
#include "scattering/ZfScatteringData.h"
#include "xml/ZfBarnFile.h"

namespace {

// Debian's interpreter, which sees the packages of the distribution: python3-h5py, see scripts/setup.
constexpr const char* kPython = "/usr/bin/python3";

class Export : public testing::Test {
protected:
    std::string WriteImage(const std::string& name, SphereMap map, double factor) {
        const auto values = [factor](double x, double /*y*/, double z) { return factor * (2.0 + x + z); };
        return WriteImageFile(
            folder_.Path(name), Sampled(map, 10.0, values),
            map == SphereMap::kAzimuthalEquidistant ? "AzimuthalEquidistant" : "EquidistantCylindrical",
            "a title");
    }

    ExportRequest Request(SphereMap map, const std::string& output) {
        return {WriteImage("p.xml_img", map, 1.5),
                WriteImage("i0.xml_img", map, 1.0),
                {},
                {},
                {},
                true,
                folder_.Path(output)};
    }

    /// Two sources of l sizes 2 and 1, the first a plane wave.
    std::string WriteWave() {
        const ConsoleRedirection quiet(nullptr);
        ZfScatteringData data;
        data.Version = kMulti;
        data.ListScatteringData.resize(1);
        ZfScatteringRecord& record = data.ListScatteringData[0];
        std::vector<ZfFreeElectron>& sources = record.ListScatterer.electrons;
        sources.resize(2);
        sources[0].A.SetSize(2);
        sources[0].A.At(1, -1) = {0.1, -0.7};
        sources[0].IsPlaneWave = true;
        sources[0].planeWaveVector = Vector3(1e10, 0.0, 2e10);
        sources[0].atomicNumber = 29;
        sources[1].A.SetSize(1);
        sources[1].A.At(0, 0) = {3.0, 4.0};
        sources[1].position = Vector3(1e-10, 0.0, -2e-10);
        sources[1].atomicNumber = 8;
        sources[1].Uiso = 2e-22;
        record.StIndex = 1;
        record.EWIndex = 4;
        record.Ratio = 0.25;
        record.ListScatterer.SetEnergy_eV(560.0);
        record.NextListScatterer = record.ListScatterer;
        record.atomLabels = {"Cu", "\xC3\xA9toile"};
        ZfBarnFile file(folder_.Path("w.xml_sf"), "w");
        data.Exchange(file);
        file.Save();
        return folder_.Path("w.xml_sf");
    }

    /// Runs assertions of Python in the folder.
    void ExpectInPython(const std::string& script) {
        folder_.Write("check.py", "import h5py, numpy as np\n" + script);
        const std::string command = std::string("cd ") + folder_.Path("") + " && " + kPython + " check.py";
        EXPECT_EQ(std::system(command.c_str()), 0);  // NOLINT(cert-env33-c,concurrency-mt-unsafe)
    }

    TempFolder folder_;
};

TEST_F(Export, CsvBringsSettingsAndReadsBack) {
    ExportRequest request = Request(SphereMap::kAzimuthalEquidistant, "p.csv");
    request.runFiles = {WriteWave()};
    const ExportSummary summary = ExportImage(request);
    const std::string text = folder_.Read("p.csv");
    for (const char* line :
         {"# image_file = p.xml_img\n", "# i0_file = i0.xml_img\n", "# resolution = 10 degrees\n",
          "# Title = a title\n", "# method = MULTI\n", "# EPS = 0.01\n", "# passes = 0\n", "# records = 1\n",
          "# largest_l_size = 2\n", "# kinetic_energies = 560 eV\n", "# atoms = 2\n",
          "\ntheta,phi,I,I0,chi\n90,270,3,2,0.5\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line;
    const MeasuredPattern points = LoadMeasuredPattern(request.output);
    EXPECT_EQ(points.theta.size(), summary.pixels);
    EXPECT_EQ(summary.pixels, 253U);  // lattice points in a disc of radius 9
    for (std::size_t i = 0; i < points.theta.size(); ++i) {
        const auto linear = [](double x, double /*y*/, double z) { return 3.0 + 1.5 * (x + z); };
        EXPECT_NEAR(points.intensity[i], At(linear, points.theta[i] * kDegree, points.phi[i] * kDegree),
                    1e-6);
        EXPECT_NEAR(points.chi[i], 0.5, 1e-6);
    }
}

// Text waves and columns come back as the same points, from both maps.
TEST_F(Export, FieldTablesReadBack) {
    const auto linear = [](double x, double /*y*/, double z) { return 3.0 + 1.5 * (x + z); };
    for (const SphereMap map : {SphereMap::kAzimuthalEquidistant, SphereMap::kEquidistantCylindrical})
        for (const char* output : {"p.itx", "p.tpi", "p.pite"}) {
            SCOPED_TRACE(output);
            ExportRequest request = Request(map, output);
            const bool igor = std::string(output) == "p.itx";
            if (!igor) request.i0.clear();
            request.runFiles = {WriteWave()};
            const ExportSummary summary = ExportImage(request);
            const MeasuredPattern points = LoadMeasuredPattern(request.output);
            ASSERT_EQ(points.theta.size(), summary.pixels);
            EXPECT_EQ(points.chi.size(), igor ? summary.pixels : 0U);
            EXPECT_EQ(points.energy,
                      std::vector<double>(std::string(output) == "p.pite" ? summary.pixels : 0, 560.0));
            for (std::size_t i = 0; i < points.theta.size(); ++i)
                EXPECT_NEAR(points.intensity[i],
                            At(linear, points.theta[i] * kDegree, points.phi[i] * kDegree), 1e-6);
        }
    ExportRequest request = Request(SphereMap::kAzimuthalEquidistant, "p.etpi");
    request.i0.clear();
    request.runFiles = {QVRE_EXAMPLES "/cu001_small/emitter.xml_emt"};
    ExportImage(request);
    EXPECT_EQ(LoadMeasuredPattern(request.output).energy.at(0), 560.0);
    request = Request(SphereMap::kAzimuthalEquidistant, "p.etpi");
    const auto error = [&] { return ErrorText([&] { ExportImage(request); }); };
    EXPECT_EQ(error(), "The columns of .etpi hold the intensity alone: for chi write .csv or .itx");
    request.i0.clear();
    EXPECT_EQ(error(),
              "An image does not tell its kinetic energy: name a file of the run that does, such as the "
              ".xml_emt, or "
              "write .tpi, which has none");
    request.output = folder_.Path("p.etpai");
    EXPECT_EQ(error(), "An image has no angle along a slit and no standard deviation: write .tpi or .etpi");
}

TEST_F(Export, AnotherReaderTakesImages) {
    for (const char* output : {"disc.h5", "disc.npy"})
        ExportImage(Request(SphereMap::kAzimuthalEquidistant, output));
    for (const char* output : {"grid.h5", "grid.npy"})
        ExportImage(Request(SphereMap::kEquidistantCylindrical, output));
    ExpectInPython(R"(
def signal(name):
    f = h5py.File(name)
    entry = f[f.attrs['default']]
    data = entry[entry.attrs['default']]
    assert entry.attrs['NX_class'] == 'NXentry' and data.attrs['NX_class'] == 'NXdata'
    assert entry['settings/resolution'][()] == 10 and entry['settings/resolution'].attrs['units'] == 'degrees'
    assert entry['settings/Title'][()].decode() == 'a title'
    assert entry['settings/map'][()].decode() == ('AzimuthalEquidistant' if 'disc' in name else 'EquidistantCylindrical')
    assert list(data.attrs['auxiliary_signals']) == ['I', 'I0']
    return data, data[data.attrs['signal']], [data[a] for a in data.attrs['axes']]

def indices(name):
    return {k[:-8]: list(v) for k, v in signal(name)[0].attrs.items() if k.endswith('_indices')}

assert indices('disc.h5') == {'y': [0], 'x': [1], 'theta': [0, 1], 'phi': [0, 1]}
assert indices('grid.h5') == {'theta': [0], 'phi': [1]}

for name, shape in (('disc', (19, 19)), ('grid', (10, 36))):
    data, chi, axes = signal(name + '.h5')
    array = np.load(name + '.npy')
    assert array.shape == (5,) + shape and chi.shape == shape and [len(a) for a in axes] == list(shape)
    theta, phi, I, I0, c = array
    rad = np.radians
    expected = 3 + 1.5 * (np.sin(rad(theta)) * np.cos(rad(phi)) + np.cos(rad(theta)))
    inside = theta <= 90
    assert inside.sum() == (253 if name == 'disc' else 360)
    assert np.allclose(I[inside], expected[inside], atol=1e-6) and np.isnan(I[~inside]).all()
    for key, plane in (('I', I), ('I0', I0), ('chi', c)):
        assert np.array_equal(data[key][()], plane, equal_nan=True)
y, x = signal('disc.h5')[2]
assert y[0] == -90 and x[-1] == 90
array = np.load('disc.npy')
assert np.allclose(x[12], (array[0] * np.cos(rad(array[1])))[9, 12])
theta, phi = signal('grid.h5')[2]
assert list(theta[:2]) == [0, 10] and phi[-1] == 350
)");
}

// The direct wave of an s level under light along x vanishes in the plane across; of 19 columns of the map
// only the middle one, x = 0, lies within asin(0.1) of it.
TEST_F(Export, LeavesChiOutWhereI0IsFaint) {
    const auto direct = [](double x, double, double) { return x * x; };
    const auto scattered = [](double x, double, double) { return x * x * 1.25 + 0.01; };
    WriteImageFile(folder_.Path("i0.xml_img"), Sampled(SphereMap::kAzimuthalEquidistant, 10.0, direct));
    const std::string image =
        WriteImageFile(folder_.Path("p.xml_img"), Sampled(SphereMap::kAzimuthalEquidistant, 10.0, scattered));
    for (const char* output : {"s.csv", "s.npy", "s.h5"}) {
        const ExportSummary summary =
            ExportImage({image, folder_.Path("i0.xml_img"), {}, {}, {}, false, folder_.Path(output)});
        EXPECT_EQ(summary.leftOut.substr(0, 16), "chi left out in ");
    }
    const std::string text = folder_.Read("s.csv");
    EXPECT_NE(text.find("\n# chi left out in "), std::string::npos);
    EXPECT_NE(text.find("\n0,0,0.00999999978,0,\n"), std::string::npos);
    ExpectInPython(R"(
theta, phi, I, I0, chi = np.load('s.npy')
inside = theta <= 90
assert np.array_equal(np.isnan(chi), ~inside | (np.arange(19) == 9)) and not np.isnan(I0[inside]).any()
data = h5py.File('s.h5')['entry/data']
assert np.array_equal(data['chi'][()], chi, equal_nan=True)
assert np.allclose(chi[9, 0], 0.26)
rows = [line.split(',') for line in open('s.csv') if line[0] not in '#t']
assert sum(row[4] == '\n' for row in rows) == 19 and len(rows) == inside.sum()
)");
}

TEST_F(Export, DividesByTheMeansOfTheRings) {
    const auto modulated = [](double x, double y, double z) { return (2.0 + z) * (1.0 + x * y); };
    ExportRequest request;
    request.image = WriteImageFile(folder_.Path("p.xml_img"),
                                   Sampled(SphereMap::kEquidistantCylindrical, 1.0, modulated));
    request.background = ParseBackgroundModel("mean");
    request.hemisphere = true;
    request.output = folder_.Path("b.npy");
    ExportImage(request);
    request.output = folder_.Path("b.csv");
    ExportImage(request);
    EXPECT_NE(folder_.Read("b.csv").find("\n# background = mean\n"), std::string::npos);
    EXPECT_NE(folder_.Read("b.csv").find("\ntheta,phi,I,B,chi\n"), std::string::npos);
    ExpectInPython(R"(
theta, phi, I, B, chi = np.load('b.npy')
t, p = np.radians(theta), np.radians(phi)
assert np.abs(B - 2 - np.cos(t)).max() < 0.01 and np.abs(chi - np.sin(t)**2 * np.sin(2 * p) / 2).max() < 0.01
)");
}

TEST_F(Export, AnotherReaderTakesAWave) {
    const WaveSummary summary = ExportScatteredWave(WriteWave(), {}, folder_.Path("w.h5"));
    EXPECT_EQ(summary.sources, 2U);
    ExpectInPython(R"(
f = h5py.File('w.h5')
r = f['entry/record_000']
A, l, m = r['A'][()], r['l'][()], r['m'][()]
assert A.dtype == np.complex128 and A.shape == (2, 4)
assert A[0, (l == 1) & (m == -1)][0] == 0.1 - 0.7j and A[1, 0] == 3 + 4j and np.count_nonzero(A) == 2
assert list(l) == [0, 1, 1, 1] and list(m) == [0, -1, 0, 1] and list(r['l_size']) == [2, 1]
assert np.allclose(r['position'][1], [1e-10, 0, -2e-10], rtol=1e-5, atol=0) and r['position'].attrs['units'] == 'm'
assert [n.decode() for n in r['name']] == ['Cu', 'étoile']
assert r['kinetic_energy'][()] == 560 and abs(r['wave_number'][()] * 1e-10 - 12.1236) < 1e-4
assert np.allclose(r['plane_wave_vector'], [1e10, 0, 2e10])
assert f['entry/settings/method'][()] == b'MULTI' and f['entry/settings/largest_l_size'][()] == 2
assert r['structure_index'][()] == 1 and r['wave_index'][()] == 4 and r['ratio'][()] == 0.25
assert list(r['atomic_number']) == [29, 8] and list(r['Uiso']) == [0, 2e-22]
)");
}

TEST_F(Export, SameContentSameBytes) {
    ExportImage(Request(SphereMap::kEquidistantCylindrical, "a.h5"));
    ExportImage(Request(SphereMap::kEquidistantCylindrical, "b.h5"));
    EXPECT_EQ(folder_.Read("a.h5"), folder_.Read("b.h5"));
    EXPECT_GT(folder_.Read("a.h5").size(), 360 * sizeof(double));
}

}  // namespace
