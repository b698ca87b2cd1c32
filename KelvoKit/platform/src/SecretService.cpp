#include "kelvo/platform/SecretService.h"

#include <libsecret/secret.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

namespace kelvo::platform {
namespace {

const SecretSchema* schema() {
    // Built field by field: the schema's reserved fields belong to libsecret.
    static const SecretSchema value = [] {
        SecretSchema schema{};
        schema.name = "dev.kelvo.KeyValue";
        schema.flags = SECRET_SCHEMA_NONE;
        schema.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        schema.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        return schema;
    }();
    return &value;
}

template <class T>
struct GObjectRelease {
    void operator()(T* object) const { g_object_unref(object); }
};
template <class T>
using Owned = std::unique_ptr<T, GObjectRelease<T>>;

struct AttributesRelease {
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
using Attributes = std::unique_ptr<GHashTable, AttributesRelease>;

Attributes attributesFor(const std::string& service, const std::string& account) {
    return Attributes(
        secret_attributes_build(schema(), "service", service.c_str(), "account", account.c_str(), nullptr));
}

// The shared connection to the service, with a transfer session for secrets; nothing
// when there is no bus or nothing serves the interface. Errors are dropped on purpose:
// every caller reads a failure as "nothing".
Owned<SecretService> connect() {
    if (!sessionBusReachable()) return nullptr;
    GError* error = nullptr;
    SecretService* service = secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, nullptr, &error);
    g_clear_error(&error);
    return Owned<SecretService>(service);
}

}  // namespace

bool sessionBusReachable() {
    // GLib's own order: the address variable, then the runtime folder's socket. Past
    // those it would run dbus-launch, which is exactly what must not happen here.
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address && *address) return true;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (!runtime || !*runtime) return false;
    struct stat status {};
    const auto socket = std::filesystem::path(runtime) / "bus";
    return ::stat(socket.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

std::optional<std::string> findSecret(const std::string& service, const std::string& account) {
    const auto connection = connect();
    if (!connection) return std::nullopt;
    GError* error = nullptr;
    // No SECRET_SEARCH_UNLOCK: a locked item comes back without its secret instead of a prompt.
    GList* items = secret_service_search_sync(connection.get(), schema(), attributesFor(service, account).get(),
                                              SECRET_SEARCH_LOAD_SECRETS, nullptr, &error);
    g_clear_error(&error);
    std::optional<std::string> found;
    if (items) {
        if (SecretValue* value = secret_item_get_secret(static_cast<SecretItem*>(items->data))) {
            gsize length = 0;
            const gchar* bytes = secret_value_get(value, &length);
            if (bytes && g_utf8_validate(bytes, static_cast<gssize>(length), nullptr)) found.emplace(bytes, length);
            secret_value_unref(value);
        }
        g_list_free_full(items, g_object_unref);
    }
    return found;
}

void removeSecrets(const std::string& service, const std::string& account) {
    const auto connection = connect();
    if (!connection) return;
    GError* error = nullptr;
    secret_service_clear_sync(connection.get(), schema(), attributesFor(service, account).get(), nullptr, &error);
    g_clear_error(&error);
}

void addSecret(const std::string& service, const std::string& account, const std::string& label,
               const std::string& secret) {
    const auto connection = connect();
    if (!connection) return;
    GError* error = nullptr;
    const Owned<SecretCollection> collection(secret_collection_for_alias_sync(
        connection.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, &error));
    g_clear_error(&error);
    if (!collection || secret_collection_get_locked(collection.get())) return;
    SecretValue* value = secret_value_new(secret.data(), static_cast<gssize>(secret.size()), "text/plain");
    const Owned<SecretItem> item(secret_item_create_sync(collection.get(), schema(),
                                                         attributesFor(service, account).get(), label.c_str(), value,
                                                         SECRET_ITEM_CREATE_NONE, nullptr, &error));
    g_clear_error(&error);
    secret_value_unref(value);
}

}  // namespace kelvo::platform
