// Reading what the cluster looks like, of whichever kind it is.
#ifndef CLUSCTL_READPICTURE_H
#define CLUSCTL_READPICTURE_H

#include "LogCapture.h"
#include "Report.h"

#include "picture/ClusterPicture.h"

// The cluster that this command asks (ClusterInUse.h). What cannot be read is left as the type has it, and marks the
// report incomplete. Throws Failure when the cluster does not answer, or does not list what it has. Shows how far it
// is.
picture::ClusterPicture ReadPicture(const LogCapture& log, Report& report);

// The same of one kind. `log`: null to leave the progress to the caller.
picture::ClusterPicture ReadFailoverPicture(const LogCapture* log, Report& report);
picture::ClusterPicture ReadVcsPicture(const LogCapture& log);

// The name as the cluster writes it, of a name in any letter case; empty when there is none. One in the same case goes
// before others.
std::string StoredGroup(const picture::ClusterPicture& cluster, const std::wstring& name);
std::string StoredResource(const picture::ClusterPicture& cluster, const std::wstring& name);

#endif
