// The rows of the source-folder table as the bytes of "NASConf.Dat", and back.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "store/source_folder_table.h"
#include "support/text.h"

// Throws EProblem, as TTableReader does, when the bytes are not a whole file of source-folder rows.
std::vector<SourceFolderRow> ReadSourceFolderRows(std::string_view bytes, const TCodePage& codePage);

std::string WriteSourceFolderRows(const std::vector<SourceFolderRow>& rows, const TCodePage& codePage);
