#include "Failure.h"

#include "Text.h"

#include <winsock2.h>
#include <windows.h>

const ErrorKind& KindOfCode(unsigned long code, const ErrorKind& otherwise) {
    switch (code) {
    case ERROR_ACCESS_DENIED:
        return Errors::AccessDenied;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return Errors::FileNotFound;
    case ERROR_RESOURCE_NOT_FOUND:
        return Errors::ResourceNotFound;
    case ERROR_GROUP_NOT_FOUND:
        return Errors::GroupNotFound;
    case ERROR_CLUSTER_NODE_NOT_FOUND:
        return Errors::NodeNotFound;
    case ERROR_OBJECT_ALREADY_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return Errors::AlreadyExists;
    case ERROR_SHARING_PAUSED:
    case ERROR_CLUSTER_NODE_PAUSED:
        return Errors::NodePaused;
    case ERROR_TIMEOUT:
    case WAIT_TIMEOUT:
        return Errors::TimedOut;
    case ERROR_SERVICE_NOT_ACTIVE:
    case ERROR_SERVICE_DOES_NOT_EXIST:
    case ERROR_CLUSTER_NODE_DOWN:
        return Errors::NoCluster;
    case ERROR_MORE_DATA:
        return Errors::Incomplete;
    case RPC_S_UNKNOWN_IF:
    case RPC_S_SERVER_UNAVAILABLE:
    case RPC_S_SERVER_TOO_BUSY:
    case RPC_S_CALL_FAILED:
    case EPT_S_NOT_REGISTERED:
        return Errors::ClusterLost;
    default:
        return otherwise;
    }
}

bool IsLost(unsigned long code) {
    return &KindOfCode(code, Errors::Failed) == &Errors::ClusterLost;
}

std::string UnlessLost(const std::string& refusal, unsigned long code) {
    const bool isStopped = code == ERROR_SERVICE_NOT_ACTIVE || code == ERROR_SERVICE_DOES_NOT_EXIST;
    return isStopped || IsLost(code) ? "the cluster was lost" : refusal;
}

bool IsOfLostCluster(const Failure& failure) {
    const ExitCode code = failure.Kind().exitCode;
    return code == ExitNoAnswer || code == ExitLost || IsLost(failure.Win32());
}

Failure Failure::OfCode(const std::string& what, unsigned long code, const ErrorKind& otherwise) {
    Failure failure(KindOfCode(code, otherwise), what + ": " + ErrorText(code));
    failure.m_win32 = code;
    return failure;
}

Failure Failure::OfReading(const char* what, const std::wstring& name, unsigned long code) {
    return OfCode(std::string("cannot read ") + what + " of " + Quoted(name), code);
}
