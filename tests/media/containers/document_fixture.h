#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/containers/container.h"

namespace zephmetadata::media {

/// An x:xmpmeta element with a label that is @p size characters long.
inline std::string Element(char label, std::size_t size = 5) {
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
           "<rdf:Description xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\" xmp:Label=\"" +
           std::string(size, label) + "\"/></rdf:RDF></x:xmpmeta>";
}

inline FileBlocks Blocks(const Container& container, const std::string& file) {
    return container.Read(std::make_shared<MemorySource>(file));
}
inline PlannedEdit Planned(const Container& container, const std::string& file, const std::string& element) {
    BlockChanges changes;
    changes.mXMP = element;
    return container.PlanEdit(std::make_shared<MemorySource>(file), changes);
}
/// The file with the packet written; empty when that was refused.
inline std::string Edited(const Container& container, const std::string& file, const std::string& element) {
    const PlannedEdit edit = Planned(container, file, element);
    return edit.mStatus == FileStatus::kFileStatus_Success
               ? Carried(edit.mPlan, MemorySource(file)).value_or(std::string())
               : std::string();
}

/// Reads the file cut at every place and with every byte changed; writes what counts as sound, which must read back.
inline void TryDamage(const Container& container, const std::string& file) {
    const std::string element = Element('d');
    const auto tryOne = [&](const std::string& damaged, std::size_t at) {
        const FileBlocks blocks = Blocks(container, damaged);
        if (blocks.mStatus != FileStatus::kFileStatus_Success || !blocks.mWhyReadOnly.empty()) {
            return;
        }
        const std::string edited = Edited(container, damaged, element);
        if (!edited.empty()) {
            EXPECT_THAT(Blocks(container, edited).mXMP, testing::Optional(testing::HasSubstr(element))) << at;
        }
    };
    for (std::size_t at = 0; at < file.size(); ++at) {
        tryOne(file.substr(0, at), at);
        std::string flipped = file;
        flipped[at] = static_cast<char>(flipped[at] ^ (at % 2 == 0 ? 0x10 : 0x81));
        tryOne(flipped, at);
    }
}

}  // namespace zephmetadata::media
