#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qvre {

/// An identifier of the HDF5 library, closed with its owner.
class Hdf5Handle {
public:
    using Id = std::int64_t;
    using Closer = int (*)(Id);

    Hdf5Handle(Id id, Closer closer);  ///< throws ZfError for the negative id of a failed call
    Hdf5Handle(Hdf5Handle&& other) noexcept;
    Hdf5Handle(const Hdf5Handle&) = delete;
    Hdf5Handle& operator=(const Hdf5Handle&) = delete;
    Hdf5Handle& operator=(Hdf5Handle&&) = delete;
    ~Hdf5Handle();

    operator Id() const { return id_; }  // NOLINT(google-explicit-constructor): passed to the C interface

private:
    Id id_;
    Closer closer_;
};

using Hdf5Shape = std::vector<std::size_t>;  ///< the last index runs fastest

/// A group or a dataset of an Hdf5Document, which has to outlive it. Texts are UTF-8. Failures are ZfError.
class Hdf5Node {
public:
    explicit Hdf5Node(Hdf5Handle handle);

    const Hdf5Node& Attribute(const std::string& name, const std::string& text) const;
    const Hdf5Node& Attribute(const std::string& name, const std::vector<std::string>& texts) const;
    const Hdf5Node& Attribute(const std::string& name, const std::vector<std::int32_t>& numbers) const;

    /// A group with its NeXus class, such as "NXentry", in the attribute NX_class.
    Hdf5Node Group(const std::string& name, const std::string& nexusClass) const;

    // Datasets in the order of the shape, which they fill. A complex number is the compound {r, i} of two
    // 64-bit floats, which h5py reads as complex128.
    Hdf5Node Dataset(const std::string& name, const Hdf5Shape& shape,
                     const std::vector<double>& values) const;
    Hdf5Node Dataset(const std::string& name, const Hdf5Shape& shape,
                     const std::vector<std::complex<double>>& values) const;
    Hdf5Node Dataset(const std::string& name, const Hdf5Shape& shape,
                     const std::vector<std::int32_t>& values) const;
    Hdf5Node Dataset(const std::string& name, const std::vector<std::string>& texts) const;
    /// Scalars.
    Hdf5Node Dataset(const std::string& name, double value) const;
    Hdf5Node Dataset(const std::string& name, const std::string& text) const;

private:
    Hdf5Node Write(const std::string& name, const Hdf5Shape& shape, Hdf5Handle::Id type,
                   const void* values) const;

    Hdf5Handle handle_;
};

/// An HDF5 file that is put together in memory, so that the disk sees it once and whole. The same content
/// gives the same bytes: no times are stored. While it lives, the HDF5 library prints no errors of its own.
class Hdf5Document {
public:
    Hdf5Document();
    Hdf5Document(const Hdf5Document&) = delete;
    Hdf5Document& operator=(const Hdf5Document&) = delete;
    ~Hdf5Document();

    static bool CanWrite(const std::string& path);  ///< a name that ends in .h5, .hdf5 or .nxs

    const Hdf5Node& Root() const { return root_; }
    /// Throws ZfError when the file cannot be written.
    void Save(const std::string& path) const;

private:
    struct QuietLibrary {
        QuietLibrary();
        QuietLibrary(const QuietLibrary&) = delete;
        QuietLibrary& operator=(const QuietLibrary&) = delete;
        ~QuietLibrary();

        int (*printer)(std::int64_t, void*) = nullptr;
        void* data = nullptr;
    };

    QuietLibrary quiet_;
    Hdf5Handle file_;
    Hdf5Node root_;
};

}  // namespace qvre
