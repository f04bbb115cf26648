#pragma once

#include <string>

#include "host/QXPPolicyMorvaClustBox.h"

/// A K-means box in the forms that one would write without a format of its own. Numbers are the
/// shortest texts that read back as the same bits, so that the same box comes back.
namespace box_peers {

/// Whether the weight lists are written as they are, or as pairs of position and weight.
enum class Lists { dense, sparse };

/// Plain text: a line for each word and each field of a class, numbers by std::to_chars.
void write_text(QXPPolicyMorvaClustBox const& box, Lists lists, std::string const& path);
QXPPolicyMorvaClustBox read_text(Lists lists, std::string const& path);

/// JSON by nlohmann::json.
void write_json(QXPPolicyMorvaClustBox const& box, Lists lists, std::string const& path);
QXPPolicyMorvaClustBox read_json(Lists lists, std::string const& path);

}  // namespace box_peers
