// clusctl's masks: their header has the name of the VCS simulator's.
#include "../../../tools/clusctl/Secrets.h"
