#!/bin/bash
# demo.sh BIN_DIR RUN_COMMAND...: shows the library's main job on simulated clusters.
#
# BIN_DIR holds clusctl.exe with the library's and the simulator's DLLs and the VCS simulator's tools; RUN_COMMAND runs a Windows program in a Wine prefix of the
# demo's own, whose product settings are replaced. Exit code 1 as soon as something does not behave as the text says.
set -euo pipefail

if [ $# -lt 2 ]; then
    echo "usage: demo.sh BIN_DIR RUN_COMMAND..." >&2
    exit 2
fi
absolute() { # a path that still holds after the change of folder; other words stay as they are
    if [ -e "$1" ]; then realpath -- "$1"; else printf '%s\n' "$1"; fi
}
examples=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bin=$(cd "$1" && pwd)
shift
run=()
for word in "$@"; do
    run+=("$(absolute "$word")")
done

productKey='HKLM\SOFTWARE\Plinthcore'
work=$(mktemp -d)
cleanUp() {
    "${run[@]}" reg delete "$productKey" /f >/dev/null 2>&1 </dev/null || true
    rm -rf "$work"
}
trap cleanUp EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
cp "$examples"/*.json "$examples"/*.reg "$examples"/*.cf "$work"
cd "$work"
unset CLUSUTIL_LOG_FILE CLUSUTIL_LOG_LEVEL CLUSSIM_FAULTS CLUSSIM_JOURNAL
unset VCSSIM_MAIN_CF VCSSIM_OPTIONS VCSSIM_FAULTS VCSSIM_JOURNAL CLUSCTL_PASSWORD

heading() {
    printf '=== %s ===\n\n' "$1"
}

say() {
    printf '%s\n' "$@"
}

broken() {
    printf '\ndemo.sh: %s\n' "$1" >&2
    exit 1
}

settings() { # settings FILE.reg: what set-up wrote on this computer
    "${run[@]}" reg delete "$productKey" /f >/dev/null 2>&1 </dev/null || true
    "${run[@]}" reg import "$1" >import.txt 2>&1 </dev/null || broken "cannot import $1: $(cat import.txt)"
    printf '  $ reg import %s\n' "$1"
}

cluster() { # cluster FILE.json: the cluster that the simulator plays
    export CLUSSIM_FILE=$1
    printf '  $ export CLUSSIM_FILE=%s\n\n' "$1"
}

# try EXIT_CODE TEXT ARGUMENT...: prints and runs clusctl ARGUMENT...; it has to end with this code and to say this text.
try() {
    local wanted=$1 text=$2 found=0 word
    shift 2
    printf '  $ clusctl'
    for word in "$@"; do
        case $word in
            *[\ \(]*) printf ' "%s"' "$word" ;;
            *) printf ' %s' "$word" ;;
        esac
    done
    echo
    "${run[@]}" "$bin/clusctl.exe" "$@" >said.txt 2>&1 </dev/null || found=$?
    sed 's/^/  /' said.txt
    if [ "$found" -ne 0 ]; then
        printf '  (exit code %d)\n' "$found"
    fi
    echo
    [ "$found" -eq "$wanted" ] || broken "exit code $found, expected $wanted"
    grep -qF -- "$text" said.txt || broken "expected the output to say \"$text\""
}

rejects() { # rejects TEXT: what the last command said must not contain it
    ! grep -qF -- "$1" said.txt || broken "the output must not say \"$1\""
}

saidToo() { # saidToo TEXT: what the last command said must contain it
    grep -qF -- "$1" said.txt || broken "expected the output to say \"$1\""
}

say "clusutil tells a mail security product which servers it has to protect on this computer, and runs it inside them." \
    "clusctl is its command-line tool. Everything below is its real output. The clusters are simulated:" \
    "files that the cluster simulator serves in place of a real cluster." ""

heading "1. A node of a cluster"
say "What set-up wrote on this computer, and the cluster that is simulated:" ""
settings cluster.reg
cluster two-node-single-copy.json
say "The cluster has two nodes, this computer and EXNODE2, and three Exchange virtual servers," \
    "EXVS-MAIL1 to EXVS-MAIL3, each a group of resources that moves between the nodes as a whole:" ""
try 0 "EXVS-MAIL3" groups
say "Which of them does this node serve? Those whose product resource it owns, so not EXVS-MAIL3:" ""
try 0 "EXVS-MAIL1  192.0.2.21" servers
rejects "EXVS-MAIL3"
say "EXVS-MAIL2 is here too, but its product resource is offline (ONLINE: no). The same for scripts:" ""
try 0 '"name": "EXVS-MAIL1"' servers --json

heading "2. Which server is meant?"
say "A name in any letter case, with or without a domain, or an address:" ""
try 0 "F:\\Zyntra Gate\\" query exvs-mail1.example.com
try 0 "EXVS-MAIL2" query 192.0.2.22
say "EXVS-MAIL3 exists, but the other node serves it:" ""
try 3 "this node serves no server" query EXVS-MAIL3

heading "3. What belongs to a server"
say "Its Exchange SMTP instances, and the product resource with what it depends on:" ""
try 0 "100" smtp-instances EXVS-MAIL1
try 0 "Depends on:" resources "Zyntra Gate (EXVS-MAIL1)"
try 0 "single copy" host

heading "4. Rehearse a failover"
say "What if EXNODE2 fails? That is found out on a private copy of the cluster: what the cluster does, and where the" \
    "servers are then. EXVS-MAIL3 comes here:" ""
try 0 "group EXVS-MAIL3 fails over from EXNODE2 to" rehearse node-down EXNODE2 --save copy.json
saidToo "Nothing stays down"
say "The copy is kept as a model, to go on with:" ""
try 0 "EXVS-MAIL3  192.0.2.23" --model copy.json servers
say "What would a change do? Every command that changes something tells it beforehand:" ""
try 0 "OfflineClusterResource(Zyntra Gate (EXVS-MAIL1))" resource offline EXVS-MAIL1 --dry-run
say "The cluster itself is as before, byte for byte." ""
cmp -s "$examples/two-node-single-copy.json" two-node-single-copy.json || broken "the rehearsed cluster was changed"

heading "5. Continuous replication"
say "A cluster without a shared disk: each node has its own copy of the data. The data path says so:" ""
settings ccr.reg
cluster ccr.json
try 0 'CCRVSDB\EXVS-CCR1' servers
try 0 "continuous replication" host

heading "6. A plain server"
say "No cluster deployment: the one server is this computer, and its data is where set-up put it." \
    "No cluster is asked:" ""
settings plain-server.reg
say '  $ unset CLUSSIM_FILE' ""
unset CLUSSIM_FILE
try 0 "192.0.2.10" servers
try 0 "192.0.2.10" query localhost

heading "7. Put the product into a virtual server"
say "EXVS-NEW1 is an Exchange virtual server without the product. These are its resources, and its disks are here:" ""
settings cluster.reg
cluster without-product.json
try 0 "EXVS-NEW1" resources --group EXVS-NEW1
try 0 "F:\\" disk "Disk F: (EXVS-NEW1)"
try 0 "L:\\" disk "Disk L: (EXVS-NEW1)"
say "The product gets a resource of its own in that group. Which disk? Without a name, the System Attendant's." \
    "The output is what the cluster now holds: dependencies, possible owners, data path, restart action:" ""
try 0 "Depends on:            Disk F: (EXVS-NEW1)" \
    resource create EXVS-NEW1 --name "Zyntra Gate (EXVS-NEW1)" --data-path 'F:\Zyntra Gate'
saidToo 'KOVA_DATA_PATH: F:\Zyntra Gate'
saidToo "State:                 offline"
say "A group holds one such resource at most:" ""
try 4 "has the product's resource already" resource create EXVS-NEW1 --name "Zyntra Gate (again)" --data-path 'F:\Zyntra Gate'

heading "8. Switch it"
say "Online: the Information Store that it depends on was offline and takes its time, so the command waits." \
    "(On a terminal, a line shows the state and the seconds meanwhile.)" ""
try 0 "online" resource online EXVS-NEW1 --wait --timeout 30
rejects "pending"
try 0 "EXVS-NEW1  192.0.2.41  yes" servers
say "The SMTP instance of this node goes off and on again when the product has changed its settings:" ""
try 0 "SMTP Virtual Server Instance 1 (EXVS-NEW1)" smtp restart
say "Offline, and gone:" ""
try 0 "offline" resource offline EXVS-NEW1 --wait
try 0 'Deleted "Zyntra Gate (EXVS-NEW1)"' resource delete EXVS-NEW1
try 0 "serves no server" servers

heading "9. On another disk, or without a shared one"
say "A disk of the group can be named. The same for scripts:" ""
try 0 '"Disk L: (EXVS-NEW1)"' resource create EXVS-NEW1 --name "Zyntra Gate (EXVS-NEW1)" --data-path 'L:\Zyntra Gate' \
    --disk "Disk L: (EXVS-NEW1)" --json
saidToo '"KOVA_DATA_PATH": "L:\\Zyntra Gate"'
rejects "Disk F:"
try 0 "Deleted" resource delete EXVS-NEW1
say "With continuous replication (the settings say so) there is no disk, and the data path follows from the data root." \
    "The present resource is online: the cluster refuses to delete it, so it is taken offline first. Then a new one:" ""
settings ccr.reg
cluster ccr.json
try 0 'Deleted "Zyntra Gate (EXVS-CCR1)"' resource delete EXVS-CCR1
try 0 'KOVA_DATA_PATH: C:\Zyntra Gate Data\CCRVSDB\EXVS-CCR1' resource create EXVS-CCR1 --name "Zyntra Gate (new)"
rejects "Disk"
try 0 "online" resource online EXVS-CCR1 --wait

heading "10. A creation that fails half-way"
say "The simulated cluster refuses the data path, one of the last steps. All that was created before is taken back:" ""
settings cluster.reg
cluster without-product.json
cp without-product.json before.json
say "  \$ cp without-product.json before.json" "  \$ export CLUSSIM_FAULTS=ClusterResourceControl@0x01400086=5" ""
export CLUSSIM_FAULTS=ClusterResourceControl@0x01400086=5 CLUSSIM_JOURNAL=$work/journal.txt
try 9 "does not take its data path" \
    resource create EXVS-NEW1 --name "Zyntra Gate (EXVS-NEW1)" --data-path 'F:\Zyntra Gate'
unset CLUSSIM_FAULTS CLUSSIM_JOURNAL
grep -q '"call": *"CreateClusterResource"' journal.txt || broken "nothing was created that could be taken back"
say "The cluster is the one it was, byte for byte:" "" "  \$ cmp before.json without-product.json && echo same"
cmp before.json without-product.json || broken "the failed creation left something behind"
say "  same" ""

heading "11. When the cluster does not answer"
say "The settings say cluster node, but the cluster cannot be opened. An empty list would be a lie:" ""
settings cluster.reg
cluster two-node-single-copy.json
say '  $ export CLUSSIM_FAULTS=OpenCluster=1753' ""
export CLUSSIM_FAULTS=OpenCluster=1753
try 7 "cannot open this computer's cluster" servers
unset CLUSSIM_FAULTS

heading "12. Veritas Cluster Server"
say "The other kind of cluster. The library drives it through its command-line tools; here they are the VCS simulator's," \
    "which work on a main.cf, the configuration file of such a cluster:" ""
settings vcs.reg
say '  $ export VCSSIM_MAIN_CF=vcs-exchange.cf' ""
export VCSSIM_MAIN_CF=vcs-exchange.cf
try 0 "NODE2" vcs systems
try 0 "Tools" vcs groups
say "Which of the groups are Exchange virtual servers, and where do they run?" ""
try 0 "EXVS1         EVS1   online         NODE1" vcs servers
rejects "Tools"
say "What would become of them if NODE1 were lost? That is rehearsed on a copy, here too:" ""
try 0 "group EVS1 goes online on NODE2" rehearse node-down NODE1
saidToo "Nothing stays down that was online."
cmp -s "$examples/vcs-exchange.cf" vcs-exchange.cf || broken "the rehearsed cluster was changed"
say "Where do they keep their data? The product's resources go above the top-most disk, of EVS2 the one that carries the other:" ""
try 0 "EVS1-MountV" vcs storage EVS1
try 0 "EVS2-MountData" vcs storage EVS2
rejects "EVS2-MountLogs"
try 0 "EVS1-MountV" vcs deps EVS1-SA
say "Single questions, as a script would ask them (--json gives JSON):" ""
try 0 "EVS2-MountLogs" vcs resources --where Type=MountV --where Group=EVS2
try 0 'G:\Exchange Logs\' vcs attribute EVS2-MountLogs MountPath
try 0 "NODE1" vcs online-node EVS1
try 0 "EVS2" vcs find-group EXVS2
try 0 "Tools-Monitor" vcs resource-of-service Tools PerfMonitor
try 0 "1" vcs type

heading "13. The product's resources on VCS"
say "EVS1 has a registry replication of Exchange's own. It is not taken for the product's:" ""
try 4 "EVS1-RegRep" vcs product create EVS1 --rw
say "With another name, in a rehearsal on a copy: the commands, and what changes in the configuration:" ""
try 0 "hares -link EVS1-OXAHostService EVS1-GateRegRep" \
    vcs product create EVS1 --regrep EVS1-GateRegRep --delay-online 0 --rw --dry-run
saidToo $'+\tGenericService EVS1-OXAHostService ('
cmp "$examples/vcs-exchange.cf" vcs-exchange.cf || broken "the rehearsal changed the configuration"
say "The configuration has kept every byte. Now in earnest, with the quarantine monitor and the remote configuration, whose" \
    "account needs a password. It comes from the environment or is typed; VCS keeps it encrypted. The simulated cluster" \
    "starts no Windows services on this computer, so none is waited for (--delay-online 0):" ""
say '  $ export CLUSCTL_PASSWORD=...' ""
export CLUSCTL_PASSWORD='Not-a-Secret.1'
try 0 "EVS1-OXA_RemoteConfig  OXA_RemoteConfig  created" vcs product create EVS1 --regrep EVS1-GateRegRep --delay-online 0 \
    --quarantine --remote-config --account-group EXAMPLE --account-user gatesvc --rw --log create.log
unset CLUSCTL_PASSWORD
! grep -qF 'Not-a-Secret.1' said.txt create.log vcs-exchange.cf || broken "the password must not be shown or kept"
say "Every command is in the log file, the password is not:" "" '  $ grep -o "hares -modify EVS1-OXA_RemoteConfig .*" create.log'
grep -o 'hares -modify EVS1-OXA_RemoteConfig .*' create.log | tr -d '\r' | sed 's/^/  /' | tee said.txt
grep -qF 'Password ***' said.txt || broken "expected the log to hold the masked password"
say "" "What the configuration gained:" "" "  \$ diff vcs-exchange.cf.previous vcs-exchange.cf | sed 's/Password = .*/Password = ***/'"
{ diff vcs-exchange.cf.previous vcs-exchange.cf || [ $? -eq 1 ]; } | tr -d '\r' | sed -e 's/Password = .*/Password = ***/' -e 's/^/  /' |
    tee said.txt
grep -qF 'EVS1-OXA_RemoteConfig requires EVS1-OXAHostService' said.txt || broken "a dependency is missing"
say ""
try 0 "EVS1-GateRegRep" vcs deps EVS1-OXAHostService
saidToo "EVS1-IS"

heading "14. Living with it"
try 0 "EVS1-QAV_Monitor" vcs product list EVS1
try 0 "EVS1-GateRegRep" vcs storage EVS1
say "Switch a service on; a resource for it has to be there:" ""
try 0 "switches" vcs product switch-on EVS1 OXAHostService NODE1 --timeout 0
try 3 "has no resource for it" vcs product switch-on EVS2 OXAHostService NODE2 --timeout 0
say "Created again: what is there is found and set up again, and nothing is there twice:" ""
try 0 "existed already" vcs product create EVS1 --delay-online 0 --rw
rejects "created"
try 0 "EVS1-QAV_Monitor  QAV_Monitor  existed already" vcs product add-quarantine EXVS1 --timeout 0 --rw

say "The other virtual server gets its set without the extras first, and the remote configuration later:" ""
try 0 "EVS2-OXASAService" vcs product create EVS2 --delay-online 0 --rw
say '  $ export CLUSCTL_PASSWORD=...' ""
export CLUSCTL_PASSWORD='Not-a-Secret.2'
try 0 "EVS2-OXA_RemoteConfig  OXA_RemoteConfig  created" vcs product add-remote-config EXVS2 --account-group EXAMPLE \
    --account-user gatesvc --timeout 0 --rw
unset CLUSCTL_PASSWORD

heading "15. Any resource of VCS"
say "The configuration of a cluster is read-only until it is opened:" ""
try 4 "clusctl vcs mode rw" vcs resource add Tools-Watch GenericService Tools
try 0 "" vcs mode rw
try 0 "" vcs resource add Tools-Watch GenericService Tools --set ServiceName=Watch --set Enabled=1
try 0 "" vcs resource link Tools-Watch Tools-Monitor
try 0 "Tools-Monitor" vcs deps Tools-Watch
try 0 "" vcs resource online Tools-Watch NODE1
try 0 "NODE1" vcs online-node Tools
try 0 "" vcs resource offline Tools-Watch NODE1
try 0 "" vcs resource delete Tools-Watch
try 0 "" vcs mode ro
say "A password as VCS keeps it, for other tools. It is the only thing that clusctl prints:" ""
say '  $ export CLUSCTL_PASSWORD=...' ""
export CLUSCTL_PASSWORD='Not-a-Secret.3'
try 0 "" vcs encrypt
unset CLUSCTL_PASSWORD
rejects 'Not-a-Secret.3'

heading "16. When VCS does not answer"
say "Without its engine every tool prints a message, and the library takes the words for names. clusctl knows better:" ""
say '  $ export VCSSIM_OPTIONS=engine=down' ""
export VCSSIM_OPTIONS=engine=down
try 7 "the VCS engine is not running" vcs servers
unset VCSSIM_OPTIONS

heading "17. Why is a server missing?"
say "Back on the first cluster. Somebody tidies up, and deletes a resource whose name tells him nothing:" ""
say '  $ unset VCSSIM_MAIN_CF' ""
unset VCSSIM_MAIN_CF
settings cluster.reg
cluster two-node-single-copy.json
try 0 'Deleted "Zyntra Gate (EXVS-MAIL1)"' resource delete EXVS-MAIL1
say "EXVS-MAIL1 is not protected any more, and nothing says so:" ""
try 0 "EXVS-MAIL2" servers
rejects "EXVS-MAIL1"
say "The doctor walks through the library's decisions, and ends with what mends it:" ""
try 11 "[product-resource-missing]" doctor EXVS-MAIL1
saidToo 'Do: clusctl resource create "EXVS-MAIL1" --name "Zyntra Gate (EXVS-MAIL1)"'
say "Done as it says, on the disk of that server:" ""
try 0 'KOVA_DATA_PATH: F:\Zyntra Gate' resource create EXVS-MAIL1 --name "Zyntra Gate (EXVS-MAIL1)" --data-path 'F:\Zyntra Gate'
say "Is that all? It is there now, and offline:" ""
try 12 "[product-offline]" doctor EXVS-MAIL1
rejects "[product-resource-missing]"
try 0 "online" resource online EXVS-MAIL1 --wait
try 0 "[server-served]" doctor EXVS-MAIL1
try 0 "EXVS-MAIL1  192.0.2.21  yes" servers

say "That was the tour. 'clusctl --help' lists the rest, examples/README.md says how to go on by hand."
