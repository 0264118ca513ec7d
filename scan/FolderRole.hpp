#pragma once
// What a scan makes of a folder: mapped folders keep their largest children as nodes, a
// boundary folder becomes one node measured as a whole (depth, opaque, unauthorised
// library), and everything inside a boundary is only summed.

namespace veldan {

enum class FolderRole { mapped, boundary, inner };

}  // namespace veldan
