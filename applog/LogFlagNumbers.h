// The project numbers that name the user's log mutexes; other programs of the family use the same.

#pragma once

constexpr int fileOperationFlagNumber = 2147483547;
constexpr int reservedFlagNumber = 57445459;
