// Security descriptors from their text, as far as the operating-system bindings use them, answered by the stand-in.
#pragma once

#include <windows.h>

#define SDDL_REVISION_1 1

extern "C" BOOL WINAPI ConvertStringSecurityDescriptorToSecurityDescriptorA(LPCSTR StringSecurityDescriptor,
                                                                            DWORD StringSDRevision,
                                                                            PSECURITY_DESCRIPTOR* SecurityDescriptor,
                                                                            DWORD* SecurityDescriptorSize);
