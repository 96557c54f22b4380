// Where in the backup tree a source file belongs.
#pragma once

#include <string>
#include <string_view>

// The destination folder, with its trailing "\", of a source path: "C:\Daten\Brief.doc" belongs into
// "<nas>\<host>\drive_C\Daten\", "\\srv\pub\a\b.txt" into "<nas>\<host>\drive_srv\pub\a\". The drive letter
// keeps its case.
std::wstring DestinationFolder(std::wstring_view nas, std::wstring_view host, std::wstring_view sourcePath);

// The same for the files that lie in a source folder (named without a trailing "\"), without its trailing
// "\".
std::wstring DestinationOfFilesIn(std::wstring_view nas, std::wstring_view host,
                                  const std::wstring& sourceFolder);
