#pragma once

#include "morvaai.h"

#include "classes/class_report.h"

namespace tool {

/// The id of a class in a box of this name: a UUID made of the names of both, the strongest words
/// of the class, its radius and its files. So the same files learnt again into a box of the same
/// name give the same box, byte for byte, and a class that has changed has another id. (Name-based,
/// by MD5: RFC 4122, 2005, version 3.)
HString class_id(HString const& box_id, ClassReport::Class const& one);

}  // namespace tool
