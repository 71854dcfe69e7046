#pragma once

#include <hdf5.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// The few operations of HDF5's C library that the archive needs, with owned handles and exceptions. The library is
/// not thread-safe as packaged: one thread of a process owns everything here.
namespace kora::archive::hdf5 {

/// What the library refused, with its innermost reason.
class Error : public std::runtime_error
{
public:
    explicit Error(const std::string& what);
};

/// An open object of the library, closed at the end of its life.
class Handle
{
public:
    using Close = herr_t (*)(hid_t);

    Handle() = default;
    /// @param what is said in the exception when id is negative
    /// @throw Error
    Handle(hid_t id, Close close, const std::string& what);
    Handle(Handle&& other) noexcept : id(std::exchange(other.id, -1)), close(other.close) {}
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(id, other.id);
        std::swap(close, other.close);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { reset(); }

    operator hid_t() const { return id; }
    bool isOpen() const { return id >= 0; }
    /// @return false when the library could not close it, as when the disk is full
    bool reset();

private:
    hid_t id = -1;
    Close close = nullptr;
};

/// Keeps the library from printing its error stack; what went wrong is in the exceptions.
void silence();

/// @throw Error when status is negative
void check(herr_t status, const std::string& what);

Handle createGroup(hid_t parent, const std::string& name, const char* nexusClass);
void writeText(hid_t object, const char* attribute, const std::string& text);
void writeNumber(hid_t object, const char* attribute, double value);
/// @return empty or NaN for an attribute that is not there
std::string readText(hid_t object, const char* attribute);
double readNumber(hid_t object, const char* attribute);

/// A text of a fixed number of bytes, filled up with zeros.
Handle textType(std::size_t bytes);
/// A scalar data set that holds one text, which may be written again.
Handle createTextField(hid_t parent, const char* name, std::size_t bytes, const std::string& text);
void rewriteTextField(hid_t field, std::size_t bytes, const std::string& text);
std::string readTextField(hid_t parent, const char* name);

/// A growing data set: rows of `width` values of one type.
class Column
{
public:
    struct Layout
    {
        hid_t type;
        std::vector<hsize_t> rowShape; ///< empty for a row of one value
        hsize_t chunkRows;
        int deflate = 0; ///< level, 0 for none
        bool shuffle = true;
        int cachedChunks = 1;
    };

    Column() = default;
    /// Makes the data set, empty.
    static Column create(hid_t parent, const std::string& name, const Layout& layout);
    /// @throw Error when there is none
    static Column open(hid_t parent, const std::string& name);

    bool isOpen() const { return dataset.isOpen(); }
    hid_t id() const { return dataset; }
    hsize_t rows() const { return count; }
    /// Looks again how many rows there are: in a file that is being written they grow. Not while the same process has
    /// the data set open a second time: the library then mixes up where its parts lie.
    void refresh();
    /// @param memoryType type of the values in memory
    void append(const void* values, hsize_t number, hid_t memoryType);
    void overwrite(hsize_t first, const void* values, hsize_t number, hid_t memoryType);
    void resize(hsize_t number);
    void read(hsize_t first, hsize_t number, void* values, hid_t memoryType) const;

private:
    void readShape();
    Handle select(hsize_t first, hsize_t number) const;
    Handle memorySpace(hsize_t number) const;

    Handle dataset;
    std::vector<hsize_t> rowShape;
    hsize_t count = 0;
};

bool exists(hid_t parent, const std::string& path);

} // namespace kora::archive::hdf5
