#include "Platform/Linux/Foundation/Curl.h"

#include <dlfcn.h>
#include <optional>

namespace NS {

namespace {

constexpr char library[] = "libcurl.so.4";

/// Says whether the function is there.
template <class Function>
bool find(void* handle, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(handle, name));
    return function != nullptr;
}

std::optional<Curl> load() {
    void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    Curl curl = {};
    const bool isComplete =
        handle && find(handle, "curl_global_init", curl.globalInit) && find(handle, "curl_easy_init", curl.easyInit) &&
        find(handle, "curl_easy_setopt", curl.easySetopt) && find(handle, "curl_easy_getinfo", curl.easyGetinfo) &&
        find(handle, "curl_easy_cleanup", curl.easyCleanup) && find(handle, "curl_multi_init", curl.multiInit) &&
        find(handle, "curl_multi_add_handle", curl.multiAddHandle) &&
        find(handle, "curl_multi_perform", curl.multiPerform) && find(handle, "curl_multi_poll", curl.multiPoll) &&
        find(handle, "curl_multi_info_read", curl.multiInfoRead) &&
        find(handle, "curl_multi_remove_handle", curl.multiRemoveHandle) &&
        find(handle, "curl_multi_cleanup", curl.multiCleanup);
    return isComplete && curl.globalInit(CURL_GLOBAL_DEFAULT) == CURLE_OK ? std::optional(curl) : std::nullopt;
}

} // namespace

const Curl* curl() {
    static const auto loaded = load();
    return loaded ? &*loaded : nullptr;
}

} // namespace NS
