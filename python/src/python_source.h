#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>

#include "zephmetadata/byte_target.h"
#include "zephmetadata/media.h"

namespace zephpython {

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

/// A Python object with write. To be made and destroyed with the GIL held; the functions take it.
class PythonTarget : public zephmetadata::ByteTarget {
public:
    explicit PythonTarget(pybind11::object file) : mFile(std::move(file)) {}
    ~PythonTarget() override;

    bool Start(std::uint64_t /*size*/) override { return true; }
    bool Append(const void* bytes, std::size_t size) override;
    /// What was appended is there already.
    zephmetadata::FileStatus Commit() override { return zephmetadata::FileStatus::kFileStatus_Success; }
    /// What the object raised; empty when it did not.
    const std::string& Problem() const { return mProblem; }

private:
    pybind11::object mFile;
    std::string mProblem;
};

}  // namespace zephpython
