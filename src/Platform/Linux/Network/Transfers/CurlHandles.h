#pragma once

#include <curl/curl.h>

#include <memory>

// Owners of libcurl's handles.
namespace tessaro::platform {

template <auto close>
struct CurlCloser {
  template <typename Handle>
  void operator()(Handle* handle) const {
    close(handle);
  }
};

using CurlMulti = std::unique_ptr<CURLM, CurlCloser<curl_multi_cleanup>>;
using CurlShare = std::unique_ptr<CURLSH, CurlCloser<curl_share_cleanup>>;
using CurlEasy = std::unique_ptr<CURL, CurlCloser<curl_easy_cleanup>>;
using CurlList = std::unique_ptr<curl_slist, CurlCloser<curl_slist_free_all>>;
using CurlUrl = std::unique_ptr<CURLU, CurlCloser<curl_url_cleanup>>;

struct CurlText {
  void operator()(char* text) const { curl_free(text); }
};
using CurlString = std::unique_ptr<char, CurlText>;

}  // namespace tessaro::platform
