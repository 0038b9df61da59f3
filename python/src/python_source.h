#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>

#include "zephmetadata/media.h"

namespace zephpython {

/// Bytes in memory.
class BytesSource : public zephmetadata::ByteSource {
public:
    explicit BytesSource(std::string bytes) : mBytes(std::move(bytes)) {}

    std::uint64_t Size() const override { return mBytes.size(); }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override;

private:
    std::string mBytes;
};

/// A Python object with read and seek. It is asked for whole blocks, of which the latest are kept: behind it there may be
/// a network. To be made and destroyed with the GIL held; ReadAt takes it.
class PythonSource : public zephmetadata::ByteSource {
public:
    explicit PythonSource(pybind11::object file);
    ~PythonSource() override;

    std::uint64_t Size() const override { return mSize; }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override;
    /// What the object raised first; empty when it did not.
    const std::string& Problem() const { return mProblem; }

private:
    struct Block {
        std::uint64_t mNumber = 0;
        std::string mBytes;
    };

    const std::string* BlockAt(std::uint64_t number) const;
    bool Fetch(std::uint64_t number, std::string& bytes) const;

    pybind11::object mFile;
    std::uint64_t mSize = 0;
    mutable std::list<Block> mBlocks;  // the latest first
    mutable std::unordered_map<std::uint64_t, std::list<Block>::iterator> mPlaces;
    mutable std::string mProblem;
};

}  // namespace zephpython
