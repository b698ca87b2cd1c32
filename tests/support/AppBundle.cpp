#include "support/AppBundle.h"

#include <plist/plist.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "support/TempDir.h"

namespace kelvo::testing {

std::filesystem::path writeInfoPlist(const std::filesystem::path& bundle, const std::map<std::string, PlistValue>& members,
                                     PlistEncoding encoding) {
    plist_t root = plist_new_dict();
    for (const auto& [key, value] : members)
        plist_dict_set_item(root, key.c_str(), std::holds_alternative<std::string>(value)
                                                   ? plist_new_string(std::get<std::string>(value).c_str())
                                                   : plist_new_uint(static_cast<uint64_t>(std::get<std::int64_t>(value))));
    char* bytes = nullptr;
    uint32_t length = 0;
    (encoding == PlistEncoding::binary ? plist_to_bin : plist_to_xml)(root, &bytes, &length);
    plist_free(root);
    if (!bytes) throw std::runtime_error("libplist could not encode the property list");
    writeText(bundle / "Contents/Info.plist", std::string(bytes, length));
    std::free(bytes);
    return bundle;
}

std::filesystem::path makeApp(const std::filesystem::path& folder, const std::string& name, const FakeApp& app) {
    const auto bundle = folder / (name + ".app");
    std::map<std::string, PlistValue> members{{"CFBundleName", name}};
    if (app.bundleID) members["CFBundleIdentifier"] = *app.bundleID;
    if (app.executable) members["CFBundleExecutable"] = *app.executable;
    writeInfoPlist(bundle, members, app.encoding);
    if (app.payloadBytes > 0) writeFile(bundle / "Contents/Resources/payload.bin", app.payloadBytes);
    return bundle;
}

}  // namespace kelvo::testing
