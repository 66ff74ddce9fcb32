// Specimen-material item.
#include "utdata/ismat.h"

void CISpecMat::Dump(CDumpContext&) const {}
