#pragma once

#include <curl/curl.h>

#include "Base/Owned.h"

// Owners of libcurl's handles.
namespace tessaro::platform {

using CurlMulti = Owned<CURLM, curl_multi_cleanup>;
using CurlShare = Owned<CURLSH, curl_share_cleanup>;
using CurlEasy = Owned<CURL, curl_easy_cleanup>;
using CurlList = Owned<curl_slist, curl_slist_free_all>;
using CurlUrl = Owned<CURLU, curl_url_cleanup>;
using CurlString = Owned<char, curl_free>;

}  // namespace tessaro::platform
