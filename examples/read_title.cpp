// Prints the title of a photo: read_title photo.jpg
#include <zephmetadata/zephmetadata.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: read_title FILE\n";
        return 2;
    }
    zephmetadata::Initialize();
    {
        // Providers and trees end before the library does.
        const auto photo = std::make_shared<zephmetadata::FileProvider>(zephcore::PathFromNative(argv[1]));
        const zephmetadata::MetaDataReadAccess access(photo);
        std::string title;
        if (zephmetadata::GetValue(*access, zephmetadata::PathForExpression("dc:title"), title)) {
            std::cout << title << '\n';
        }
    }
    zephmetadata::Terminate();
}
