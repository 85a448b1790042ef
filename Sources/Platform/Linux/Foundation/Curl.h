#pragma once

#include <curl/curl.h>

namespace NS {

/// The functions of libcurl that are used here.
struct Curl {
    decltype(&curl_global_init) globalInit;
    decltype(&curl_easy_init) easyInit;
    decltype(&curl_easy_setopt) easySetopt;
    decltype(&curl_easy_getinfo) easyGetinfo;
    decltype(&curl_easy_cleanup) easyCleanup;
    decltype(&curl_multi_init) multiInit;
    decltype(&curl_multi_add_handle) multiAddHandle;
    decltype(&curl_multi_perform) multiPerform;
    decltype(&curl_multi_poll) multiPoll;
    decltype(&curl_multi_info_read) multiInfoRead;
    decltype(&curl_multi_remove_handle) multiRemoveHandle;
    decltype(&curl_multi_cleanup) multiCleanup;
};

/// Loads libcurl at the first call, since it brings some thirty libraries with it that a program which only waits had
/// better not hold in memory. Null when it cannot be had. Safe from any thread.
const Curl* curl();

} // namespace NS
