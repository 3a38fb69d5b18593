// The engine's model of a cluster, made of its configuration and states.
#ifndef VCSSIM_ENGINEINPUT_H
#define VCSSIM_ENGINEINPUT_H

#include "Cluster.h"
#include "EngineModel.h"

#include <string>

namespace vcssim {

EngineModel MakeEngineModel(const Cluster& cluster);

// Why the engine cannot say what such a group does, or nothing: "the dependency 'online site soft' of group G".
std::string WhyNotSimulated(const Cluster& cluster, const CfGroup& group);

} // namespace vcssim

#endif
