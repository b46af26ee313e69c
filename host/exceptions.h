#pragma once

// Raises a host exception of the class, or of "RuntimeException" where the host doesn't know the class, with
// the message (ASCII; may be null) and an ErrorNumber of 0.
//
// The host may raise at once, unwinding through the plug-in, or when control returns to it. A caller does
// nothing more than return its neutral value.
void RaiseException(const char* className, const char* message);
