// Prints the title of a photo: read_title photo.jpg
#include <zephmetadata/zephmetadata.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: read_title FILE\n";
        return 2;
    }
    // Starts the library, and stops it when everything below has ended.
    const zephmetadata::Library library;
    const auto photo = std::make_shared<zephmetadata::FileProvider>(zephcore::PathFromNative(argv[1]));
    const zephmetadata::MetaDataReadAccess access(photo);
    std::string title;
    if (!zephmetadata::GetValue(*access, zephmetadata::PathForExpression("dc:title"), title)) {
        std::cerr << argv[1] << ": no title\n";
        return 1;
    }
    std::cout << title << '\n';
}
