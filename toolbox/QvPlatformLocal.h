/// \file
/// The fault injection's lookahead, for the library's own shortcuts. Not part
/// of the library's interface.
#pragma once

/// \return True when one of the next `attempts` allocation attempts is the
///         one chosen with QvFailAllocation() to fail. Counts nothing.
bool QvAllocationFailsWithin(int attempts);
