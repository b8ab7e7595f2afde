#include "report/export/Hdf5Document.h"

#include <hdf5.h>

#include <filesystem>
#include <type_traits>
#include <utility>

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"

namespace qvre {

static_assert(std::is_same_v<hid_t, Hdf5Handle::Id> && std::is_same_v<herr_t, int>);

namespace {

void Check(herr_t status) {
    if (status < 0) throw ZfError("The HDF5 library failed to build the file: memory may be short");
}

Hdf5Handle TextType() {
    Hdf5Handle type(H5Tcopy(H5T_C_S1), H5Tclose);
    Check(H5Tset_size(type, H5T_VARIABLE));
    Check(H5Tset_cset(type, H5T_CSET_UTF8));
    return type;
}

Hdf5Handle ComplexType() {
    Hdf5Handle type(H5Tcreate(H5T_COMPOUND, sizeof(std::complex<double>)), H5Tclose);
    Check(H5Tinsert(type, "r", 0, H5T_NATIVE_DOUBLE));
    Check(H5Tinsert(type, "i", sizeof(double), H5T_NATIVE_DOUBLE));
    return type;
}

/// A shape without sizes is a scalar.
Hdf5Handle Space(const Hdf5Shape& shape) {
    if (shape.empty()) return {H5Screate(H5S_SCALAR), H5Sclose};
    const std::vector<hsize_t> sizes(shape.begin(), shape.end());
    return {H5Screate_simple(static_cast<int>(sizes.size()), sizes.data(), nullptr), H5Sclose};
}

std::vector<const char*> Pointers(const std::vector<std::string>& texts) {
    std::vector<const char*> pointers;
    pointers.reserve(texts.size());
    for (const std::string& text : texts) pointers.push_back(text.c_str());
    return pointers;
}

void WriteAttribute(hid_t node, const std::string& name, const Hdf5Shape& shape, hid_t type,
                    const void* values) {
    const Hdf5Handle space = Space(shape);
    const Hdf5Handle attribute(H5Acreate2(node, name.c_str(), type, space, H5P_DEFAULT, H5P_DEFAULT),
                               H5Aclose);
    Check(H5Awrite(attribute, type, values));
}

/// Settings of a new object of a class of the library, without the times of its making.
Hdf5Handle Timeless(hid_t objectClass) {
    Hdf5Handle properties(H5Pcreate(objectClass), H5Pclose);
    Check(H5Pset_obj_track_times(properties, false));
    return properties;
}

Hdf5Handle FileInMemory() {
    constexpr std::size_t kGrowth = std::size_t{1} << 20U;
    const Hdf5Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose);
    Check(H5Pset_fapl_core(access, kGrowth, false));
    return {H5Fcreate("memory", H5F_ACC_TRUNC, Timeless(H5P_FILE_CREATE), access), H5Fclose};
}

}  // namespace

Hdf5Handle::Hdf5Handle(Id id, Closer closer) : id_(id), closer_(closer) {
    if (id < 0) throw ZfError("The HDF5 library failed to build the file: memory may be short");
}

Hdf5Handle::Hdf5Handle(Hdf5Handle&& other) noexcept
    : id_(std::exchange(other.id_, Id{-1})), closer_(other.closer_) {}

Hdf5Handle::~Hdf5Handle() {
    if (id_ >= 0) closer_(id_);
}

Hdf5Node::Hdf5Node(Hdf5Handle handle) : handle_(std::move(handle)) {}

const Hdf5Node& Hdf5Node::Attribute(const std::string& name, const std::string& text) const {
    const char* pointer = text.c_str();
    WriteAttribute(handle_, name, {}, TextType(), &pointer);
    return *this;
}

const Hdf5Node& Hdf5Node::Attribute(const std::string& name, const std::vector<std::string>& texts) const {
    WriteAttribute(handle_, name, {texts.size()}, TextType(), Pointers(texts).data());
    return *this;
}

const Hdf5Node& Hdf5Node::Attribute(const std::string& name, const std::vector<std::int32_t>& numbers) const {
    WriteAttribute(handle_, name, {numbers.size()}, H5T_NATIVE_INT32, numbers.data());
    return *this;
}

Hdf5Node Hdf5Node::Group(const std::string& name, const std::string& nexusClass) const {
    Hdf5Node group(Hdf5Handle(
        H5Gcreate2(handle_, name.c_str(), H5P_DEFAULT, Timeless(H5P_GROUP_CREATE), H5P_DEFAULT), H5Gclose));
    group.Attribute("NX_class", nexusClass);
    return group;
}

Hdf5Node Hdf5Node::Dataset(const std::string& name, const Hdf5Shape& shape,
                           const std::vector<double>& values) const {
    return Write(name, shape, H5T_NATIVE_DOUBLE, values.data());
}

Hdf5Node Hdf5Node::Dataset(const std::string& name, const Hdf5Shape& shape,
                           const std::vector<std::complex<double>>& values) const {
    return Write(name, shape, ComplexType(), values.data());
}

Hdf5Node Hdf5Node::Dataset(const std::string& name, const Hdf5Shape& shape,
                           const std::vector<std::int32_t>& values) const {
    return Write(name, shape, H5T_NATIVE_INT32, values.data());
}

Hdf5Node Hdf5Node::Dataset(const std::string& name, const std::vector<std::string>& texts) const {
    return Write(name, {texts.size()}, TextType(), Pointers(texts).data());
}

Hdf5Node Hdf5Node::Dataset(const std::string& name, double value) const {
    return Write(name, {}, H5T_NATIVE_DOUBLE, &value);
}

Hdf5Node Hdf5Node::Dataset(const std::string& name, const std::string& text) const {
    const char* pointer = text.c_str();
    return Write(name, {}, TextType(), &pointer);
}

Hdf5Node Hdf5Node::Write(const std::string& name, const Hdf5Shape& shape, Hdf5Handle::Id type,
                         const void* values) const {
    Hdf5Handle dataset(H5Dcreate2(handle_, name.c_str(), type, Space(shape), H5P_DEFAULT,
                                  Timeless(H5P_DATASET_CREATE), H5P_DEFAULT),
                       H5Dclose);
    Check(H5Dwrite(dataset, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, values));
    return Hdf5Node(std::move(dataset));
}

Hdf5Document::QuietLibrary::QuietLibrary() {
    H5Eget_auto2(H5E_DEFAULT, &printer, &data);
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
}

Hdf5Document::QuietLibrary::~QuietLibrary() {
    H5Eset_auto2(H5E_DEFAULT, printer, data);
}

Hdf5Document::Hdf5Document()
    : file_(FileInMemory()), root_(Hdf5Handle(H5Gopen2(file_, "/", H5P_DEFAULT), H5Gclose)) {}

Hdf5Document::~Hdf5Document() = default;

bool Hdf5Document::CanWrite(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return extension == ".h5" || extension == ".hdf5" || extension == ".nxs";
}

void Hdf5Document::Save(const std::string& path) const {
    Check(H5Fflush(file_, H5F_SCOPE_GLOBAL));
    const auto size = H5Fget_file_image(file_, nullptr, 0);
    std::string image(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
    if (size <= 0 || H5Fget_file_image(file_, image.data(), image.size()) != size)
        throw ZfError("The HDF5 library failed to build the file: memory may be short");
    WriteWholeFile(path, image);
}

}  // namespace qvre
