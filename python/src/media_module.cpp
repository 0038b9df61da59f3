#include <pybind11/stl.h>

#include <array>
#include <atomic>
#include <stdexcept>

#include "media.h"
#include "module.h"
#include "panels.h"
#include "python_source.h"

namespace zephpython {

namespace py = pybind11;
using namespace zephmetadata;

namespace {

class InUse : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What Python holds. Calls without the GIL take turns by failing: two threads in one object are a mistake of the caller.
class Handle {
public:
    explicit Handle(std::unique_ptr<Media> media) : mMedia(std::move(media)) {}

    template <typename Call>
    auto Use(const Call& call) {
        const Turn turn(mIsBusy);
        return call(*mMedia);
    }

private:
    class Turn {
    public:
        explicit Turn(std::atomic<bool>& isBusy) : mIsBusy(isBusy) {
            if (mIsBusy.exchange(true)) {
                throw InUse("the photo is in use by another thread");
            }
        }
        ~Turn() { mIsBusy = false; }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        std::atomic<bool>& mIsBusy;
    };

    std::unique_ptr<Media> mMedia;
    std::atomic<bool> mIsBusy = false;
};

constexpr std::array kStatusNames = {"success",          "no-file",     "not-a-file", "unreadable", "unknown-format",
                                     "damaged-file",     "damaged-xmp", "no-xmp",     "read-only",  "cannot-carry-xmp",
                                     "writing-disabled", "not-written", "changed"};

const char* StatusName(FileStatus status) {
    return kStatusNames.at(static_cast<std::size_t>(status));
}

py::object AsPython(const RawValue& value);

py::list AsList(const RawValue& value) {
    py::list list;
    for (const RawValue& part : value.mParts) {
        list.append(AsPython(part));
    }
    return list;
}

py::dict AsDict(const RawValue& value) {
    py::dict dict;
    for (std::size_t i = 0; i < value.mParts.size(); ++i) {
        dict[Text(value.mNames[i])] = AsPython(value.mParts[i]);
    }
    return dict;
}

/// Texts, lists and dictionaries of such; None for nothing, NotImplemented for values that differ.
py::object AsPython(const RawValue& value) {
    using Shape = RawValue::Shape;
    switch (value.mShape) {
        case Shape::kText:
            return Text(value.mText);
        case Shape::kList:
            return AsList(value);
        case Shape::kFields:
        case Shape::kLanguages:
            return AsDict(value);
        case Shape::kMixed:
            return py::reinterpret_borrow<py::object>(Py_NotImplemented);
        default:
            return py::none();
    }
}

using EditRow = std::tuple<std::string, std::string, std::string, std::string>;  // kind, path, language, value

std::vector<ValueEdit> EditsOf(const std::vector<EditRow>& rows) {
    std::vector<ValueEdit> edits;
    for (const auto& [kind, path, language, value] : rows) {
        ValueEdit edit;
        edit.mKind = kind == "delete" ? EditKind::kEditKind_Delete : EditKind::kEditKind_Set;
        edit.mPath = PathForExpression(path);
        edit.mLanguage = language;
        edit.mValue = value;
        edits.push_back(std::move(edit));
    }
    return edits;
}

/// For each edit that is refused its number and why.
py::list Edit(Handle& handle, const std::vector<EditRow>& rows) {
    const EditReport report = handle.Use([&](Media& media) { return media.Edit(EditsOf(rows)); });
    py::list refusals;
    for (std::size_t i = 0; i < report.mOutcomes.size(); ++i) {
        if (report.mOutcomes[i].mResult == EditResult::kEditResult_Refused) {
            refusals.append(py::make_tuple(i, Shown(report.mOutcomes[i].mReason)));
        }
    }
    return refusals;
}

/// Whether something was written; the status; its detail; why edits were refused; each file that was not written, with its
/// status and detail.
py::tuple AsPython(const EditReport& report) {
    py::list reasons;
    for (const EditOutcome& outcome : report.mOutcomes) {
        if (outcome.mResult == EditResult::kEditResult_Refused) {
            reasons.append(Shown(outcome.mReason));
        }
    }
    py::list failures;
    for (const WriteFailure& failure : report.mFailures) {
        failures.append(py::make_tuple(Text(zephcore::PathToNative(failure.mPath)), StatusName(failure.mStatus),
                                       Text(failure.mDetail)));
    }
    return py::make_tuple(report.IsChanged(), StatusName(report.mStatus), Text(report.mDetail), reasons, failures);
}

py::tuple Save(Handle& handle) {
    const EditReport report = [&] {
        const py::gil_scoped_release unlocked;
        return handle.Use([](Media& media) { return media.Save(); });
    }();
    return AsPython(report);
}

py::tuple SaveTo(Handle& handle, const py::object& object) {
    const auto target = std::make_shared<PythonTarget>(object);
    EditReport report = [&] {
        const py::gil_scoped_release unlocked;
        return handle.Use([&](Media& media) { return media.SaveTo(target); });
    }();
    report.mDetail = target->Problem().empty() ? report.mDetail : target->Problem();
    return AsPython(report);
}

/// None for what is no bytes.
py::object Bytes(Handle& handle) {
    const sp<const BufferSource> bytes = handle.Use([](Media& media) { return media.Bytes(); });
    return bytes ? py::object(py::bytes(bytes->Bytes())) : py::none();
}

py::str Display(Handle& handle, const std::string& path, const std::string& language) {
    const InLanguage inLanguage(language);
    return Text(handle.Use([&](Media& media) { return media.Display(path); }));
}

/// Text, HTML page and JSON; None where there is no such view.
py::object Panel(Handle& handle, const std::string& view, const std::string& language) {
    const InLanguage inLanguage(language);
    const auto forms = handle.Use([&](Media& media) { return PanelOf(view, media.Name(), media.Tree()); });
    return forms ? py::object(py::make_tuple(Text(forms->mText), Text(forms->mPage), Text(forms->mJson))) : py::none();
}

py::list Validate(Handle& handle) {
    py::list findings;
    for (const ValidationFinding& finding : handle.Use([](Media& media) { return media.Validate(); })) {
        const bool isError = finding.severity == ValidationSeverity::kValidationSeverity_Error;
        findings.append(py::make_tuple(Text(finding.path), isError ? "error" : "warning",
                                       ValidationRuleName(finding.rule), Shown(finding.message)));
    }
    return findings;
}

/// The status, its detail and the problems that reading met.
py::tuple LastRead(Handle& handle) {
    return handle.Use([](Media& media) {
        py::list problems;
        for (const ErrorInfo& error : media.ReadErrors()) {
            problems.append(Shown(error.message));
        }
        return py::make_tuple(StatusName(media.LastRead().mStatus), Text(media.LastRead().mDetail), problems);
    });
}

std::unique_ptr<Handle> OpenFile(const std::string& name, int policy) {
    const py::gil_scoped_release unlocked;
    return std::make_unique<Handle>(Media::OpenFile(name, static_cast<SidecarPolicy>(policy)));
}

/// None when the bytes are no packet.
std::unique_ptr<Handle> OpenPacket(const std::string& packet) {
    const py::gil_scoped_release unlocked;
    auto media = Media::OpenPacket(packet);
    return media ? std::make_unique<Handle>(std::move(media)) : nullptr;
}

std::unique_ptr<Handle> OpenBytes(std::string bytes) {
    const py::gil_scoped_release unlocked;
    return std::make_unique<Handle>(Media::OpenBytes(std::move(bytes)));
}

/// With what the object raised while it was read, which is empty when it did not.
py::tuple OpenObject(const py::object& object) {
    const auto source = std::make_shared<PythonSource>(object);
    auto handle = [&] {
        const py::gil_scoped_release unlocked;
        return std::make_unique<Handle>(Media::OpenSource(source));
    }();
    return py::make_tuple(std::move(handle), source->Problem());
}

std::unique_ptr<Handle> OpenTogether(const std::vector<Handle*>& parts) {
    std::vector<const Media*> media;
    media.reserve(parts.size());
    for (Handle* part : parts) {
        media.push_back(part->Use([](Media& one) { return &one; }));
    }
    auto together = Media::OpenTogether(media);
    return together ? std::make_unique<Handle>(std::move(together)) : nullptr;
}

/// The values of a file at some paths, with the status and the detail of its reading.
py::tuple ReadColumns(const std::string& name, int policy, const std::vector<std::string>& columns) {
    std::vector<RawValue> values;
    FileReport report;
    {
        const py::gil_scoped_release unlocked;
        const std::unique_ptr<Media> media = Media::OpenFile(name, static_cast<SidecarPolicy>(policy));
        report = media->LastRead();
        for (const std::string& column : columns) {
            values.push_back(media->AtOrMade(column));
        }
    }
    py::list cells;
    for (const RawValue& value : values) {
        cells.append(AsPython(value));
    }
    return py::make_tuple(StatusName(report.mStatus), Text(report.mDetail), cells);
}

/// The extensions of the formats, in lower case.
std::set<std::string> Extensions() {
    std::set<std::string> extensions;
    for (const MediaFormat& format : MediaFormats()) {
        extensions.insert(format.mExtensions.begin(), format.mExtensions.end());
    }
    return extensions;
}

void RaiseInUse(std::exception_ptr thrown) {
    try {
        std::rethrow_exception(std::move(thrown));
    } catch (const InUse& error) {
        PyErr_SetString(py::module_::import("zephmetadata._errors").attr("InUse").ptr(), error.what());
    }
}

}  // namespace

void AddMedia(py::module_& module) {
    py::class_<Handle>(module, "Media")
        .def("get",
             [](Handle& handle, const std::string& path) {
                 return AsPython(handle.Use([&](Media& media) { return media.At(path); }));
             })
        .def("properties",
             [](Handle& handle) {
                 py::list names;
                 for (const std::string& name : handle.Use([](Media& media) { return media.Properties(); })) {
                     names.append(Text(name));
                 }
                 return names;
             })
        .def("display", Display)
        .def("panel", Panel)
        .def("origin",
             [](Handle& handle, const std::string& path) {
                 return static_cast<int>(handle.Use([&](Media& media) { return media.Origin(path); }));
             })
        .def("packet",
             [](Handle& handle) { return py::bytes(handle.Use([](Media& media) { return media.Packet(); })); })
        .def("touched", [](Handle& handle) { return handle.Use([](Media& media) { return media.Touched(); }); })
        .def("take_edits",
             [](Handle& handle, const std::string& packet, const std::set<std::string>& touched) {
                 return handle.Use([&](Media& media) { return media.TakeEdits(packet, touched); });
             })
        .def("sidecar",
             [](Handle& handle) { return py::bytes(handle.Use([](Media& media) { return media.Sidecar(); })); })
        .def("edit", Edit)
        .def("save", Save)
        .def("save_to", SaveTo)
        .def("data", Bytes)
        .def("validate", Validate)
        .def("last_read", LastRead);

    module.def("open_file", OpenFile);
    module.def("open_packet", OpenPacket);
    module.def("open_bytes", OpenBytes);
    module.def("open_object", OpenObject);
    module.def("open_together", OpenTogether);
    module.def("read_columns", ReadColumns);
    module.def("extensions", Extensions);
    py::register_local_exception_translator(RaiseInUse);
}

}  // namespace zephpython
