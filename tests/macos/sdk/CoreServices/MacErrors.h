// Status codes of the C interfaces.

#pragma once

enum {
  nsvErr = -35,
  ioErr = -36,
  bdNamErr = -37,
  fnfErr = -43,
  paramErr = -50,
  dirNFErr = -120,
  procNotFound = -600,
  errFSNotAFolder = -1407,
  pathTooLongErr = -2110,
  afpAccessDenied = -5000,
  gestaltUndefSelectorErr = -5551,
};
