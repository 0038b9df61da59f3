#pragma once

#include <gtest/gtest.h>

#include <string>

#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {

inline const std::string kDC = "http://purl.org/dc/elements/1.1/";
inline const std::string kOwn = "http://zephmetadata.test/own/";

/// The toolkit runs, with a namespace of the test's own (prefix "own") of which the toolkit has no notions.
template <typename Base = ::testing::Test>
class RunningToolkit : public Base {
protected:
    RunningToolkit() {
        Start();
        RegisterNamespace(kOwn, "own");
    }
    ~RunningToolkit() override { Stop(); }
};

/// A packet with @p body in its one rdf:Description.
inline std::string Packet(const std::string& body) {
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'>"
           "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' xmlns:dc='" +
           kDC + "' xmlns:own='" + kOwn + "'>" + body + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

inline XMPMetaPtr Parsed(const std::string& packet) {
    XMPMetaPtr tree = NewTree();
    EXPECT_TRUE(ParsePacket(tree.get(), packet)) << packet;
    return tree;
}

/// Names the rows of a table by their mLabel.
struct LabelOf {
    template <typename Info>
    std::string operator()(const Info& row) const {
        return row.param.mLabel;
    }
};

/// One line for each node but the schemas, for comparisons and messages.
inline std::string Listing(XMPMetaHandle tree) {
    std::string lines;
    for (const Node& node : Nodes(tree, {}, {}, Walk::kSubtree)) {
        if ((node.mOptions & kSchemaNode) == 0) {
            lines += node.mPath + "=" + node.mValue + "\n";
        }
    }
    return lines;
}

/// The toolkit's number of the XMPError that @p step throws; 0 when it throws none.
template <typename Step>
int ErrorOf(Step step) {
    try {
        step();
    } catch (const XMPError& error) {
        EXPECT_STRNE(error.what(), "");
        return error.Id();
    }
    return 0;
}

}  // namespace zephmetadata::toolkit
