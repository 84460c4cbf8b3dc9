// The part of libshared that needs the curl library, in a library of its own.
#pragma once

// As httpd_wget, with texts that are not empty. Its name there is "vek_http_download".
using HttpDownload = int(const char* url, const char* path);
