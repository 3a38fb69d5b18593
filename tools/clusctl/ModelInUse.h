// --model FILE: this process asks a simulated cluster instead of the one that this computer is in.
#ifndef CLUSCTL_MODELINUSE_H
#define CLUSCTL_MODELINUSE_H

#include "BundleFiles.h"
#include "Simulation.h"

#include <string>

// Starts the simulator that the file is for: that of failover clusters for a model in JSON, that of VCS for a main.cf
// or a folder with one, for a support bundle that of the model in it; for a recording none, it answers itself once
// BeginReplay is called. To be called before the
// cluster API or a VCS tool is used; nothing real is asked from then on. Throws WrongUsage when the command asks the
// other kind of cluster, Failure when there is no such file, or the installation lacks the simulator.
void UseModel(const std::wstring& file, Answering asked);

// Whether a model is one of VCS, not of a failover cluster. Throws Failure when there is no such file, or it cannot be
// read.
bool IsModelOfVcs(const std::wstring& file);

// The text of a model's file. Throws Failure when it cannot be read.
std::string ReadModelText(const std::wstring& file);

// Throws Failure when it is a recording, which answers like a cluster and is no model of one.
void RequireModel(const std::wstring& file);

// The file that a model is read from: itself, the main.cf of a folder, or that of a bundle, which is unpacked
// (BundleFiles.h). Throws Failure when there is none.
std::wstring ModelFile(const std::wstring& named);

// The folder in which this installation, or build, has this file of the simulators; with a backslash at its end. Throws
// Failure when there is none.
std::wstring SimulatorFolder(const wchar_t* file);

// Loads the simulator of failover clusters in place of the cluster API. Throws Failure when the installation lacks it.
void LoadClusterSimulator();

// As the user has named it; empty without one.
const std::wstring& NamedModel();

// Whether it is that of a support bundle, which is looked at, not changed.
bool IsBundleInUse();

// The bundle whose computer this process takes for its own; empty without one.
const std::wstring& BundleInUse();
// Of a bundle that the model of this process is a copy from. To be called before the model is asked.
void UseComputerOf(const std::wstring& bundle);
// What that bundle tells of its computer; null without one.
const BundledComputer* BundledComputerInUse();

#endif
