#pragma once

/// The version of the host interface that this library stands in for.
#define kDDImageVersion "11.2v4"
#define kDDImageVersionMajorNum 11
#define kDDImageVersionMinorNum 2
#define kDDImageVersionReleaseNum 4
#define kDDImageVersionInteger 112004
