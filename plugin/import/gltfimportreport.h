#pragma once

// How the host hears of a load's end: the status word, the return value, a message box where dialogs are allowed, and the load
// report that goes to the host's usage reporting.

#include "plugin/document/gltfload.h"
#include "plugin/module/hostvalue.h"

namespace q7z
{

struct LoadOutcome
{
  String status;         ///< "none" for a load that succeeded
  Int32 result = 0;      ///< what Load returns; 0 for most failures
  Int32 textNumber = 0;  ///< the resource text that tells the user; 0 for none
};

/// @param error  of the load; empty when it succeeded. Its class alone decides.
LoadOutcome GetLoadOutcome(const Error& error) noexcept;

/// Prints the error for developers, puts its message into text when there is one, and shows the outcome's text in a message box
/// when dialogs are allowed.
void TellFailure(const Error& error, const LoadOutcome& outcome, Bool dialogsAllowed, String* text) noexcept;

/// Sends the one event of a load. Failures have no effect; an entry that cannot be made is sent empty.
/// @param load  null when the load ended before there was one.
void SendLoadReport(GltfLoad* load, const HostFilename& name, const String& status) noexcept;

}  // namespace q7z
