// What bench/compare holds the library against: the toolkit with its own file support, and nothing above it.
//   toolkit_alone read FILE...     walks over every node of each file's XMP
//   toolkit_alone write FILE...    sets a title in each
#include <cstdio>
#include <cstring>

#include "ratio.h"

namespace {

void Read(const char* path) {
    const bench::FileHandle file(xmp_files_open_new(path, XMP_OPEN_READ));
    const bench::TreeHandle tree(file ? xmp_files_get_new_xmp(file.get()) : nullptr);
    if (!tree) {
        return;
    }
    const bench::IteratorHandle iterator(xmp_iterator_new(tree.get(), nullptr, nullptr, XMP_ITER_PROPERTIES));
    const bench::StringHandle schema(xmp_string_new());
    const bench::StringHandle name(xmp_string_new());
    const bench::StringHandle value(xmp_string_new());
    while (xmp_iterator_next(iterator.get(), schema.get(), name.get(), value.get(), nullptr)) {
        std::printf("%s: %s\n", xmp_string_cstr(name.get()), xmp_string_cstr(value.get()));
    }
}

void Write(const char* path) {
    const bench::FileHandle file(xmp_files_open_new(path, XMP_OPEN_FORUPDATE));
    const bench::TreeHandle tree(file ? xmp_files_get_new_xmp(file.get()) : nullptr);
    if (tree && xmp_set_localized_text(tree.get(), NS_DC, "title", "", "x-default", "Compared", 0)) {
        xmp_files_put_xmp(file.get(), tree.get());
        xmp_files_close(file.get(), XMP_CLOSE_NOOPTION);
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 3 || !xmp_init()) {
        std::fputs("usage: toolkit_alone read|write FILE...\n", stderr);
        return 2;
    }
    const bool writes = std::strcmp(arguments[1], "write") == 0;
    for (int i = 2; i < count; ++i) {
        writes ? Write(arguments[i]) : Read(arguments[i]);
    }
    xmp_terminate();
    return 0;
}
