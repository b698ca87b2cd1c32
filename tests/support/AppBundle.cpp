#include "support/AppBundle.h"

#include <plist/plist.h>

#include <cstdlib>
#include <stdexcept>

#include "support/TempDir.h"

namespace kelvo::testing {

std::filesystem::path makeApp(const std::filesystem::path& folder, const std::string& name, const FakeApp& app) {
    const auto bundle = folder / (name + ".app");
    plist_t root = plist_new_dict();
    plist_dict_set_item(root, "CFBundleName", plist_new_string(name.c_str()));
    if (app.bundleID) plist_dict_set_item(root, "CFBundleIdentifier", plist_new_string(app.bundleID->c_str()));
    if (app.executable) plist_dict_set_item(root, "CFBundleExecutable", plist_new_string(app.executable->c_str()));
    char* bytes = nullptr;
    uint32_t length = 0;
    (app.encoding == PlistEncoding::binary ? plist_to_bin : plist_to_xml)(root, &bytes, &length);
    plist_free(root);
    if (!bytes) throw std::runtime_error("libplist could not encode the property list");
    writeText(bundle / "Contents/Info.plist", std::string(bytes, length));
    std::free(bytes);
    if (app.payloadBytes > 0) writeFile(bundle / "Contents/Resources/payload.bin", app.payloadBytes);
    return bundle;
}

}  // namespace kelvo::testing
