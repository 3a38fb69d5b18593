// The Windows services of this computer in a rehearsal on a copy of a VCS cluster: those of the product run where their
// resources are online.
#ifndef CLUSCTL_SIMULATEDSERVICES_H
#define CLUSCTL_SIMULATEDSERVICES_H

#include <string>

namespace SimulatedServices {

// From now on the cluster with this main.cf tells which services there are.
void Begin(const std::wstring& mainCf);

bool AreInForce();

// Both are false for a service that no resource of the cluster runs. Throw Failure when the copy cannot be read.
bool IsInstalled(const std::wstring& service);
bool IsRunning(const std::wstring& service);

} // namespace SimulatedServices

#endif
