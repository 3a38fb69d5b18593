// The restart of an Exchange SMTP instance.
#ifndef CLUS_SMTPRESTART_H
#define CLUS_SMTPRESTART_H

namespace clus {

// Restarts the first SMTP instance that is online on this node; true when the switch-on was issued.
bool RestartFirstSmtpInstanceOfThisNode();

} // namespace clus

#endif
