#pragma once

#include <functional>
#include <string>

#include "batch/condition.h"
#include "collections/database.h"

namespace zephmeta {

/// Asks an index; no file is opened. All that fails throws DatabaseError, a search that cannot be read std::invalid_argument.
class IndexReader {
public:
    using Visit = std::function<void(const std::string& file, const ValueSource& values)>;

    explicit IndexReader(const std::string& name);
    /// Every file that could be read, in the order of their names; with @p words only those whose texts match them.
    void ForEach(const std::string& words, const Visit& visit) const;

private:
    Database mDatabase;
};

}  // namespace zephmeta
