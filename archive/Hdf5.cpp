#include "archive/Hdf5.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kora::archive::hdf5 {

namespace {

/// Outermost first: the last one visited is the reason.
herr_t keepReason(unsigned, const H5E_error2_t* error, void* reason)
{
    if (error->desc)
        *static_cast<std::string*>(reason) = error->desc;
    return 0;
}

std::string reasonOfTheLibrary()
{
    std::string reason;
    H5Ewalk2(H5E_DEFAULT, H5E_WALK_DOWNWARD, keepReason, &reason);
    return reason;
}

Handle scalarSpace()
{
    return Handle(H5Screate(H5S_SCALAR), H5Sclose, "scalar");
}

std::vector<char> paddedText(std::size_t bytes, const std::string& text)
{
    std::vector<char> padded(bytes, '\0');
    std::copy_n(text.begin(), std::min(bytes, text.size()), padded.begin());
    return padded;
}

} // namespace

Error::Error(const std::string& what) : std::runtime_error(what + ": " + reasonOfTheLibrary()) {}

Handle::Handle(hid_t id, Close close, const std::string& what) : id(id), close(close)
{
    if (id < 0)
        throw Error(what);
}

bool Handle::reset()
{
    const hid_t open = std::exchange(id, -1);
    return open < 0 || close(open) >= 0;
}

void silence()
{
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
}

void check(herr_t status, const std::string& what)
{
    if (status < 0)
        throw Error(what);
}

Handle createGroup(hid_t parent, const std::string& name, const char* nexusClass)
{
    Handle group(H5Gcreate2(parent, name.c_str(), H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT), H5Gclose, name);
    if (nexusClass)
        writeText(group, "NX_class", nexusClass);
    return group;
}

void writeText(hid_t object, const char* attribute, const std::string& text)
{
    // Of variable length: that is what other readers hand on as a text and not as bytes.
    const Handle type(H5Tcopy(H5T_C_S1), H5Tclose, attribute);
    check(H5Tset_size(type, H5T_VARIABLE), attribute);
    check(H5Tset_cset(type, H5T_CSET_UTF8), attribute);
    const Handle written(H5Acreate2(object, attribute, type, scalarSpace(), H5P_DEFAULT, H5P_DEFAULT), H5Aclose,
                         attribute);
    const char* value = text.c_str();
    check(H5Awrite(written, type, &value), attribute);
}

void writeNumber(hid_t object, const char* attribute, double value)
{
    const Handle written(H5Acreate2(object, attribute, H5T_NATIVE_DOUBLE, scalarSpace(), H5P_DEFAULT, H5P_DEFAULT),
                         H5Aclose, attribute);
    check(H5Awrite(written, H5T_NATIVE_DOUBLE, &value), attribute);
}

std::string readText(hid_t object, const char* attribute)
{
    if (H5Aexists(object, attribute) <= 0)
        return {};
    const Handle read(H5Aopen(object, attribute, H5P_DEFAULT), H5Aclose, attribute);
    const Handle type(H5Aget_type(read), H5Tclose, attribute);
    if (H5Tget_class(type) != H5T_STRING)
        return {};
    if (H5Tis_variable_str(type) > 0) {
        char* value = nullptr;
        check(H5Aread(read, type, &value), attribute);
        const std::string text(value ? value : "");
        H5free_memory(value);
        return text;
    }
    std::string text(H5Tget_size(type), '\0');
    check(H5Aread(read, type, text.data()), attribute);
    return text.c_str();
}

double readNumber(hid_t object, const char* attribute)
{
    if (H5Aexists(object, attribute) <= 0)
        return std::numeric_limits<double>::quiet_NaN();
    const Handle read(H5Aopen(object, attribute, H5P_DEFAULT), H5Aclose, attribute);
    const Handle space(H5Aget_space(read), H5Sclose, attribute);
    double value = std::numeric_limits<double>::quiet_NaN();
    if (H5Sget_simple_extent_npoints(space) == 1)
        check(H5Aread(read, H5T_NATIVE_DOUBLE, &value), attribute);
    return value;
}

Handle textType(std::size_t bytes)
{
    Handle type(H5Tcopy(H5T_C_S1), H5Tclose, "text");
    check(H5Tset_size(type, bytes), "text");
    check(H5Tset_strpad(type, H5T_STR_NULLPAD), "text");
    check(H5Tset_cset(type, H5T_CSET_UTF8), "text");
    return type;
}

Handle createTextField(hid_t parent, const char* name, std::size_t bytes, const std::string& text)
{
    // Room from the start, so that it can be written again while others read.
    const Handle early(H5Pcreate(H5P_DATASET_CREATE), H5Pclose, name);
    check(H5Pset_alloc_time(early, H5D_ALLOC_TIME_EARLY), name);
    Handle field(H5Dcreate2(parent, name, textType(bytes), scalarSpace(), H5P_DEFAULT, early, H5P_DEFAULT), H5Dclose,
                 name);
    rewriteTextField(field, bytes, text);
    return field;
}

void rewriteTextField(hid_t field, std::size_t bytes, const std::string& text)
{
    check(H5Dwrite(field, textType(bytes), H5S_ALL, H5S_ALL, H5P_DEFAULT, paddedText(bytes, text).data()), "text");
}

std::string readTextField(hid_t parent, const char* name)
{
    const Handle field(H5Dopen2(parent, name, H5P_DEFAULT), H5Dclose, name);
    const Handle type(H5Dget_type(field), H5Tclose, name);
    const Handle space(H5Dget_space(field), H5Sclose, name);
    if (H5Tget_class(type) != H5T_STRING || H5Tis_variable_str(type) > 0 || H5Sget_simple_extent_npoints(space) != 1)
        throw Error(std::string(name) + " is no text");
    std::string text(H5Tget_size(type), '\0');
    check(H5Dread(field, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, text.data()), name);
    return text.c_str();
}

Column Column::create(hid_t parent, const std::string& name, const Layout& layout)
{
    std::vector<hsize_t> shape = {0};
    std::vector<hsize_t> largest = {H5S_UNLIMITED};
    std::vector<hsize_t> chunk = {layout.chunkRows};
    std::size_t chunkBytes = H5Tget_size(layout.type) * layout.chunkRows;
    for (const hsize_t values : layout.rowShape) {
        shape.push_back(values);
        largest.push_back(values);
        chunk.push_back(values);
        chunkBytes *= values;
    }
    const int dimensions = int(shape.size());
    const Handle space(H5Screate_simple(dimensions, shape.data(), largest.data()), H5Sclose, name);
    const Handle creation(H5Pcreate(H5P_DATASET_CREATE), H5Pclose, name);
    check(H5Pset_chunk(creation, dimensions, chunk.data()), name);
    if (layout.shuffle)
        check(H5Pset_shuffle(creation), name);
    if (layout.deflate > 0)
        check(H5Pset_deflate(creation, unsigned(layout.deflate)), name);
    const Handle access(H5Pcreate(H5P_DATASET_ACCESS), H5Pclose, name);
    constexpr std::size_t slots = 11;
    check(H5Pset_chunk_cache(access, slots, chunkBytes * std::size_t(layout.cachedChunks), 1.0), name);

    Column column;
    column.dataset =
        Handle(H5Dcreate2(parent, name.c_str(), layout.type, space, H5P_DEFAULT, creation, access), H5Dclose, name);
    column.rowShape = layout.rowShape;
    return column;
}

Column Column::open(hid_t parent, const std::string& name)
{
    Column column;
    column.dataset = Handle(H5Dopen2(parent, name.c_str(), H5P_DEFAULT), H5Dclose, name);
    column.readShape();
    return column;
}

void Column::refresh()
{
    check(H5Drefresh(dataset), "look again");
    readShape();
}

void Column::readShape()
{
    const Handle space(H5Dget_space(dataset), H5Sclose, "space");
    const int dimensions = H5Sget_simple_extent_ndims(space);
    if (dimensions < 1)
        throw Error("a data set without rows");
    std::vector<hsize_t> shape(std::size_t(dimensions), 0);
    check(H5Sget_simple_extent_dims(space, shape.data(), nullptr), "shape");
    count = shape.front();
    rowShape.assign(shape.begin() + 1, shape.end());
}

void Column::append(const void* values, hsize_t number, hid_t memoryType)
{
    if (number == 0)
        return;
    const hsize_t first = count;
    resize(count + number);
    overwrite(first, values, number, memoryType);
}

void Column::overwrite(hsize_t first, const void* values, hsize_t number, hid_t memoryType)
{
    check(H5Dwrite(dataset, memoryType, memorySpace(number), select(first, number), H5P_DEFAULT, values), "write");
}

void Column::resize(hsize_t number)
{
    std::vector<hsize_t> shape = {number};
    shape.insert(shape.end(), rowShape.begin(), rowShape.end());
    check(H5Dset_extent(dataset, shape.data()), "extend");
    count = number;
}

void Column::read(hsize_t first, hsize_t number, void* values, hid_t memoryType) const
{
    if (number == 0)
        return;
    check(H5Dread(dataset, memoryType, memorySpace(number), select(first, number), H5P_DEFAULT, values), "read");
}

Handle Column::select(hsize_t first, hsize_t number) const
{
    Handle space(H5Dget_space(dataset), H5Sclose, "space");
    std::vector<hsize_t> start(rowShape.size() + 1, 0);
    std::vector<hsize_t> size = {number};
    size.insert(size.end(), rowShape.begin(), rowShape.end());
    start.front() = first;
    check(H5Sselect_hyperslab(space, H5S_SELECT_SET, start.data(), nullptr, size.data(), nullptr), "select");
    return space;
}

Handle Column::memorySpace(hsize_t number) const
{
    std::vector<hsize_t> shape = {number};
    shape.insert(shape.end(), rowShape.begin(), rowShape.end());
    return Handle(H5Screate_simple(int(shape.size()), shape.data(), nullptr), H5Sclose, "space");
}

bool exists(hid_t parent, const std::string& path)
{
    for (std::size_t end = path.find('/'); end != std::string::npos; end = path.find('/', end + 1)) {
        if (H5Lexists(parent, path.substr(0, end).c_str(), H5P_DEFAULT) <= 0)
            return false;
    }
    return H5Lexists(parent, path.c_str(), H5P_DEFAULT) > 0;
}

} // namespace kora::archive::hdf5
