// All codes of the doctor.
#ifndef CLUSCTL_DOCTORCODES_H
#define CLUSCTL_DOCTORCODES_H

#include "Doctor.h"

bool IsDoctorCode(const std::string& name);

// The code of that name. Throws Failure when the table does not have it.
const DoctorCode& FindDoctorCode(const std::string& name);

#endif
