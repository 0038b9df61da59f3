#include "python_source.h"

#include <algorithm>
#include <string_view>

namespace zephpython {

namespace py = pybind11;

namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} << 10U;
constexpr std::size_t kMaxBlocks = 64;

/// Whatever thread it is that lets go last.
void Release(py::object& object) {
    const PyGILState_STATE state = PyGILState_Ensure();
    Py_XDECREF(object.release().ptr());
    PyGILState_Release(state);
}

/// What was raised, without the lines that say where.
std::string Told(const std::exception& error) {
    const std::string_view text = error.what();
    return std::string(text.substr(0, text.find('\n')));
}

}  // namespace

PythonSource::PythonSource(py::object file) : mFile(std::move(file)) {
    constexpr int kFromEnd = 2;
    mFile.attr("seek")(0, kFromEnd);
    mSize = mFile.attr("tell")().cast<std::uint64_t>();
}

PythonSource::~PythonSource() {
    Release(mFile);
}

bool PythonSource::ReadAt(std::uint64_t offset, void* into, std::size_t size) const {
    if (offset > mSize || size > mSize - offset) {
        return false;
    }
    auto* to = static_cast<char*>(into);
    while (size > 0) {
        const std::string* const block = BlockAt(offset / kBlockBytes);
        const auto begin = static_cast<std::size_t>(offset % kBlockBytes);
        if (block == nullptr || block->size() <= begin) {
            return false;
        }
        const std::size_t count = std::min(size, block->size() - begin);
        to = std::copy_n(block->data() + begin, count, to);
        offset += count;
        size -= count;
    }
    return true;
}

const std::string* PythonSource::BlockAt(std::uint64_t number) const {
    const auto known = mPlaces.find(number);
    if (known != mPlaces.end()) {
        mBlocks.splice(mBlocks.begin(), mBlocks, known->second);
        return &mBlocks.front().mBytes;
    }
    Block block{number, {}};
    if (!Fetch(number, block.mBytes)) {
        return nullptr;
    }
    if (mBlocks.size() == kMaxBlocks) {
        mPlaces.erase(mBlocks.back().mNumber);
        mBlocks.pop_back();
    }
    mBlocks.push_front(std::move(block));
    mPlaces[number] = mBlocks.begin();
    return &mBlocks.front().mBytes;
}

bool PythonSource::Fetch(std::uint64_t number, std::string& bytes) const {
    const py::gil_scoped_acquire gil;
    const std::uint64_t begin = number * kBlockBytes;
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(kBlockBytes, mSize - begin));
    try {
        mFile.attr("seek")(begin);
        while (bytes.size() < wanted) {
            const py::bytes part(mFile.attr("read")(wanted - bytes.size()));
            const std::string_view view(part);
            if (view.empty() || view.size() > wanted - bytes.size()) {
                mProblem = mProblem.empty() ? "its source ends before its size" : mProblem;
                return false;
            }
            bytes += view;
        }
        return true;
    } catch (const std::exception& error) {
        // What Python raised: a source answers by its result alone.
        mProblem = mProblem.empty() ? Told(error) : mProblem;
        return false;
    }
}

PythonTarget::~PythonTarget() {
    Release(mFile);
}

bool PythonTarget::Append(const void* bytes, std::size_t size) {
    const py::gil_scoped_acquire gil;
    const auto* from = static_cast<const char*>(bytes);
    try {
        while (size > 0) {
            const py::object count = mFile.attr("write")(py::bytes(from, size));
            const auto written = count.is_none() ? size : count.cast<std::size_t>();  // raw files may take less
            if (written == 0 || written > size) {
                mProblem = "its target does not take all of it";
                return false;
            }
            from += written;
            size -= written;
        }
        return true;
    } catch (const std::exception& error) {
        mProblem = Told(error);  // a target answers by its result alone
        return false;
    }
}

}  // namespace zephpython
