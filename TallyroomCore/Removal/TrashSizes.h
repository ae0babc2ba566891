#pragma once

namespace tallyroom {

/// The file "directorysizes" of a trash, in which programs note how large the folders in it are.
namespace TrashSizes {

/// Drops the lines of folders that are in the trash no more. The file is replaced in one step, so that no
/// program reads half of it. Does nothing for a trash without that file. `trash` is the open trash folder.
void dropGone(int trash);

} // namespace TrashSizes

} // namespace tallyroom
