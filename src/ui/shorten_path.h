// Paths that are too long for the place they are shown in.
#pragma once

#include <functional>
#include <string>
#include <string_view>

// Whether a text fits into the place.
using TFits = std::function<bool(std::wstring_view text)>;

// The text itself when it fits. Otherwise the path with an ellipsis in its middle: of its folders as much as
// fits is kept from the front, its drive and its file name stay. A file name that does not fit by itself is
// cut at its end, and so is a text that is no path.
std::wstring ShortenPath(std::wstring_view path, const TFits& fits);
