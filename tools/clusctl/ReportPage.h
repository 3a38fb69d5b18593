// What the page of "clusctl report" is made of.
#ifndef CLUSCTL_REPORTPAGE_H
#define CLUSCTL_REPORTPAGE_H

#include "Doctor.h"
#include "Simulation.h"
#include "Status.h"

#include "picture/HtmlPage.h"

#include <string>
#include <vector>

// `warnings`: what could not be read. `simulation`: who answered; null when the cluster is a real one.
picture::PageContent ReportPage(const Status& status, const Findings& findings,
                                const std::vector<std::string>& warnings, const Simulation* simulation);

#endif
