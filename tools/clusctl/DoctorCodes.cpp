#include "DoctorCodes.h"

#include "Failure.h"

#include <algorithm>
#include <iterator>

namespace {

const FindingLevel Ok = FindingLevel::Ok;
const FindingLevel Note = FindingLevel::Note;
const FindingLevel Warning = FindingLevel::Warning;
const FindingLevel Error = FindingLevel::Error;

const char NoServer[] = "The library leaves its server out of the list, and finds it under no name or address.";
const char NotHere[] =
    "The library compares letter for letter and takes it for another node's: nothing of it is served here.";
const char NoCreation[] = "The library does not create the product's resource in this group.";

// docs/doctor.md has a section for each that is not ok.
const DoctorCode Codes[] = {
    // this computer
    {"bundle", Ok, ""},
    {"bundle-without-findings", Note, "The library's own decisions go by none of them."},
    {"library", Ok, ""},
    {"library-version-differs", Warning, "The library calls it all the same; what it does may differ."},
    {"log-not-handed-out", Note, "The library works as ever; --verbose shows nothing, and failures have less detail."},
    {"run-ended", Warning, "The library knows nothing of it: what was half done stays so."},
    {"capture-files-left", Note, "The library takes new names for its own files and lets these lie."},

    // settings
    {"settings-file-none", Ok, ""},
    {"settings-file-entry", Ok, ""},
    {"settings-file-no-entry", Warning, "The library uses the compiled-in registry key."},
    {"settings-file-line-ignored", Warning, "Reading on behind an entry, the library swallows the line that follows."},
    {"settings-file-too-long", Warning, "The library reads no further."},
    {"settings-file-not-ascii", Warning, "The library takes each byte for a character of its own."},
    {"settings-file-hidden", Note, "The library does not read this one."},
    {"product-key", Ok, ""},
    {"product-key-denied", Error, "The library cannot read IsCluster, and takes this computer for a plain server."},
    {"product-key-missing", Error,
     "The library finds no setting, takes this computer for a plain server, and knows no data path."},
    {"value-wrong-type", Error, "The library takes the value for missing."},
    {"value-too-long", Error, "The library takes the value for missing."},
    {"is-cluster-missing", Note, "The library takes this computer for a plain server."},
    {"is-cluster-unknown", Warning, "Only 1 makes a cluster: the library takes this computer for a plain server."},
    {"quorum-mode-missing", Warning, "The library gives 0 as the quorum mode; callers create no resource with it."},
    {"quorum-mode-unknown", Warning, "The library gives it as it is, and creates no resource with it."},
    {"home-directory-missing", Warning,
     "The library finds no web site of the product, and leaves the record of a plain server half filled."},
    {"server-address-missing", Warning, "The library gives 127.0.0.1 as the server's address."},
    {"server-guid-missing", Warning, "The library gives a GUID of zeros."},
    {"data-root-missing", Error, "The library creates no resource for a server with continuous replication."},
    {"data-root-other-key", Note,
     "The library reads this one value from the compiled-in key, whatever the file names."},
    {"deployment", Ok, ""},

    // a plain server
    {"plain-server", Ok, ""},
    {"plain-server-incomplete", Error, "The library lists it with an empty name or data path."},

    // the failover cluster
    {"cluster-open", Ok, ""},
    {"cluster-not-open", Error, "The library can list no server: enumeration, look-up and creation fail."},
    {"cluster-not-deployed", Error,
     "The library lists this computer as a plain server, and none of the cluster's virtual servers."},
    {"node-name", Ok, ""},
    {"node-name-case", Error, NotHere},
    {"node-missing", Error, "The library takes no resource for this node's."},
    {"node-unread", Warning, "The library does not ask for it; whether this is a node cannot be told."},
    {"node-paused", Warning, "It keeps what it owns: the library lists that, and switches nothing on there."},
    {"node-down", Warning, "Its servers are served by nobody until a group moves."},
    {"node-joining", Warning, "No group comes online there before it has joined."},
    {"resources-unlisted", Error, "The library can list no server: enumeration and look-up fail."},
    {"resource-unread", Error, "The library skips it; if it is the product's, its server is left out of the list."},
    {"type-case", Error, "The library compares type names letter for letter, and does not see this resource."},
    {"types-unlisted", Warning, "If the product's is not there, the library cannot create the product's resource."},
    {"cluster-unread", Warning, "The library may stop at the same place."},
    {"group-failed", Error, "The library serves what is online of it."},
    {"group-offline", Error, "The library lists its server as not online."},
    {"group-unread", Warning, "The library does not ask for it."},
    {"resource-failed", Error, "The library does not ask for it; what rests on it is not online."},
    {"resource-offline", Warning, "The library does not ask for it; what rests on it is not online."},
    {"resource-pending", Warning, "The library does not ask for it; what rests on it waits."},
    {"server-part-offline", Error, "The library serves it all the same; Exchange does not."},
    {"server-unread", Error, "The library may not find it either."},
    {"product-type-missing", Warning, "The library cannot create the product's resource."},
    {"servers-none", Note, "The library lists no server."},

    // a virtual server
    {"network-name-missing", Error, "The library finds no server to create, switch or delete a resource for."},
    {"network-name-unread", Error, "The library passes the resource over, and leaves its server out of the list."},
    {"network-name-lower-case", Error,
     "The library looks for the name in capitals: it lists the server, and does not find it to create, switch or "
     "delete "
     "the product's resource, or to collect SMTP instances."},
    {"attendant-missing", Warning, NoCreation},
    {"attendant-several", Note, "The library takes the first for the disk and the possible owners."},
    {"store-missing", Warning, NoCreation},
    {"store-several", Note, "The library lets the product's resource depend on the first."},
    {"product-resource", Ok, ""},
    {"product-resource-missing", Warning, "The library sees no server in this group."},
    {"product-resource-several", Warning,
     "The library lists the server once for each, and switches those of one type only, clusRDLL first."},
    {"creation-possible", Ok, ""},
    {"creation-blocked", Error, NoCreation},
    {"type-not-of-deployment", Note, "The library serves it all the same."},
    {"product-detail-unread", Warning, "The library may stop at the same place."},
    {"owner-here", Ok, ""},
    {"owner-other-node", Note, "The library lists its server there."},
    {"owner-case", Error, NotHere},
    {"owner-unread", Error, NoServer},
    {"product-online", Ok, ""},
    {"product-offline", Error, "The library lists its server as not online."},
    {"product-failed", Error, "The library lists its server as not online."},
    {"product-pending", Warning, "The library lists its server as not online until it is."},
    {"network-name-dependency-missing", Error, NoServer},
    {"network-name-id-unread", Error, NoServer},
    {"address-dependency-missing", Error, NoServer},
    {"address-missing", Error, NoServer},
    {"data-path", Ok, ""},
    {"data-path-missing", Error, NoServer},
    {"data-path-empty", Error, NoServer},
    {"data-path-relative", Warning, "The library gives it as it is; a program reads it from its own folder."},
    {"data-path-long", Warning, "The library cuts it to 511 characters."},
    {"data-path-off-disk", Warning, "The library gives it as it is; after a failover the data is not where it says."},
    {"store-dependency-missing", Warning, "The library serves it; the product may start before the store."},
    {"disk-dependency-missing", Warning, "The library serves it; the product may start before its disk."},
    {"disk-path-unknown", Warning, "The library tells no drive or mount path of the disk."},
    {"possible-owner-missing", Warning, "The library serves it; after a failover to that node nothing does."},
    {"restart-action", Warning, "The library serves it; a failure of the resource is met otherwise than set up."},
    {"smtp-instances-none", Note, "The library collects none."},
    {"smtp-instances-many", Error, "The library collects the first 128 and reports a failure."},
    {"smtp-instances-unread", Error, "The library reports a failure; the list is not complete."},
    {"server-served", Ok, ""},
    {"server-left-out", Error, NoServer},

    // VCS
    {"vcs-tool", Ok, ""},
    {"vcs-tool-missing", Error, "The library runs it by its name, and reports every question that needs it as failed."},
    {"vcs-tool-current-folder", Warning, "A program that runs in that folder makes the library run this one."},
    {"vcs-tool-writable", Error, "The library would run it all the same, with this account's rights."},
    {"vcs-type-none", Warning, "The library tells its callers that there is no third-party cluster."},
    {"vcs-data-root-missing", Warning, "The library does not find the product's RegRep resources by their folder."},
    {"vcs-data-root-blank", Warning,
     "The library puts it on command lines without quotes: the tools get it in pieces."},
    {"vcs-engine", Ok, ""},
    {"vcs-engine-down", Error, "The library takes the words of the message for names of systems and groups."},
    {"vcs-not-asked", Error, "The library reports its questions as failed."},
    {"vcs-system-missing", Warning, "The library asks all the same; no group can be online here."},
    {"vcs-mode-closed", Ok, ""},
    {"vcs-mode-open", Warning,
     "The library can change it, and a system that fails now starts with what was saved last."},
    {"vcs-mode-unknown", Note, "The library does not ask for it."},
    {"vcs-servers-unread", Error, "The library reports a failure, and the list is not complete."},
    {"vcs-server-unread", Error, "The library stops at the same place."},
    {"vcs-store-missing", Error, "The library takes the group for no virtual server."},
    {"vcs-server", Ok, ""},
    {"vcs-lanman-missing", Error, "The library gives no network name, and does not find the server by one."},
    {"vcs-virtual-name-missing", Error, "The library does not find the server by its network name."},
    {"vcs-group-here", Ok, ""},
    {"vcs-group-other-system", Note, "The library names that system; it is served there."},
    {"vcs-group-offline", Error, "The library creates the product's resources without switching them on."},
    {"vcs-group-faulted", Error, "The library asks only where the group is online; nothing clears the fault."},
    {"vcs-group-faulted-elsewhere", Warning, "The library does not ask for it; the group cannot move there."},
    {"vcs-group-frozen", Warning,
     "The library switches resources on as ever; VCS refuses, or does nothing on a fault."},
    {"vcs-group-disabled", Warning, "The library does not ask for it; nothing of the group comes online there."},
    {"vcs-attendant-missing", Warning, "The library finds no MountV resource to put the product's resources on."},
    {"vcs-mount", Ok, ""},
    {"vcs-mount-missing", Warning, "The library finds no MountV resource to put the product's resources on."},
    {"vcs-mount-several", Warning, "The library gives them all; the caller has to choose."},
    {"vcs-product-missing", Warning, "Nothing of the product runs with this virtual server."},
    {"vcs-creation-possible", Ok, ""},
    {"vcs-creation-blocked", Error,
     "The library does not look for it: what it creates is not whole, or takes another program's resource."},
    {"vcs-replication", Ok, ""},
    {"vcs-replication-missing", Error, "The library adds no quarantine monitor, and the settings stay on one system."},
    {"vcs-replication-disk-missing", Warning, "The library does not find the product's disk by it."},
    {"vcs-replication-half-made", Warning, "The library takes it for somebody else's."},
    {"vcs-replication-more-keys", Warning, "The library compares the whole list, and takes it for somebody else's."},
    {"vcs-service-missing", Error, "The library has nothing to switch on: the service does not run with the group."},
    {"vcs-service-optional", Note, "The library creates it only when it is asked for."},
    {"vcs-service-several", Warning, "The library takes the first that VCS lists."},
    {"vcs-resource-online", Ok, ""},
    {"vcs-resource-offline", Error, "The library switches it on only when it is told to."},
    {"vcs-resource-faulted", Error, "VCS does not start it; the library clears the fault before it switches it on."},
    {"vcs-resource-faulted-elsewhere", Warning, "The library does not ask for it; it may not start there."},
    {"vcs-resource-disabled", Warning, "The library switches it on as ever; VCS does not start it."},
    {"vcs-service-order", Warning, "The library links them when it creates them; now they may start before Exchange."},
    {"vcs-system-down", Warning, "The library asks where the group is online; no group can be there."},
    {"vcs-resource-not-probed", Warning, "VCS does not start it; the library probes it before it switches it on."},
};

} // namespace

bool IsDoctorCode(const std::string& name) {
    return std::any_of(std::begin(Codes), std::end(Codes),
                       [&name](const DoctorCode& code) { return code.name == name; });
}

const DoctorCode& FindDoctorCode(const std::string& name) {
    const auto found =
        std::find_if(std::begin(Codes), std::end(Codes), [&name](const DoctorCode& code) { return code.name == name; });
    if (found == std::end(Codes)) {
        throw Failure("the doctor has no code " + name);
    }
    return *found;
}
