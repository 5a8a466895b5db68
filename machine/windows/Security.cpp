// Tokens, privileges, security descriptors and the access check.
#include "machine/windows/Security.h"

#include "Lib/LittleEndian.h"
#include "machine/windows/Handles.h"
#include "machine/windows/LastError.h"
#include "machine/windows/State.h"

#include <windows.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sddl.h>
#include <string_view>

using namespace StandIn;

namespace {

constexpr std::uint32_t ErrorGenericNotMapped = 1360;
constexpr BYTE MostSubAuthorities = 15;
constexpr DWORD GenericRights = 0xF0000000;

constexpr DWORD SystemEnvironment = 22; // the privilege for firmware variables

BOOL TokenGive(DWORD access, bool impersonation, PHANDLE result) {
    if (result == nullptr) {
        return FailFalse(ERROR_NOACCESS);
    }
    *result = HandleOpen({.Kind = HandleKind::Token, .Name = "", .Access = access, .Impersonation = impersonation});
    return TRUE;
}

// The token of a handle that grants a right; null with the last error set.
const Handle* TokenFind(HANDLE value, DWORD right) {
    const Handle* const token = HandleFind(value, HandleKind::Token);
    if (token == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
    } else if ((token->Access & right) != right) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return token;
}

bool SidValid(const SID* sid) {
    return sid != nullptr && sid->Revision == SID_REVISION && sid->SubAuthorityCount <= MostSubAuthorities;
}

DWORD SidLength(const SID* sid) {
    return static_cast<DWORD>(offsetof(SID, SubAuthority) + sizeof(DWORD) * sid->SubAuthorityCount);
}

// Copied from memory, because the type declares an array of one for the sub-authorities.
DWORD SubAuthority(const SID* sid, unsigned index) {
    return LittleEndianRead<DWORD>(reinterpret_cast<const char*>(sid) + offsetof(SID, SubAuthority) +
                                   sizeof(DWORD) * index);
}

bool IsWindowsOwn(const SID* sid) {
    constexpr SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    return std::memcmp(&sid->IdentifierAuthority, &authority, sizeof authority) == 0;
}

bool IsAdministrators(const SID* sid) {
    return IsWindowsOwn(sid) && sid->SubAuthorityCount == 2 && SubAuthority(sid, 0) == SECURITY_BUILTIN_DOMAIN_RID &&
           SubAuthority(sid, 1) == DOMAIN_ALIAS_RID_ADMINS;
}

bool IsSystem(const SID* sid) {
    return IsWindowsOwn(sid) && sid->SubAuthorityCount == 1 && SubAuthority(sid, 0) == SECURITY_LOCAL_SYSTEM_RID;
}

// Whether the user belongs to a group. Only that of the administrators is known.
bool UserInGroup(const SID* sid) {
    return IsAdministrators(sid) && MachineGet().Administrator;
}

bool AclValid(const ACL* acl) {
    return acl->AclRevision == ACL_REVISION && acl->AclSize >= sizeof *acl;
}

// Where the entries of an access list end; 0 when they don't fit it.
std::size_t AclEnd(const ACL* acl) {
    std::size_t at = sizeof *acl;
    for (unsigned entry = 0; entry < acl->AceCount; ++entry) {
        ACE_HEADER header;
        if (at + sizeof header > acl->AclSize) {
            return 0;
        }
        std::memcpy(&header, reinterpret_cast<const char*>(acl) + at, sizeof header);
        if (header.AceSize < sizeof header || at + header.AceSize > acl->AclSize) {
            return 0;
        }
        at += header.AceSize;
    }
    return at;
}

// Adds an entry to a list; false with the last error set when there is no room.
bool EntryAdd(PACL list, ACCESS_MASK rights, const SID* sid) {
    const std::size_t end = AclEnd(list);
    const DWORD sidLength = SidLength(sid);
    const std::size_t size = offsetof(ACCESS_ALLOWED_ACE, SidStart) + sidLength;
    if (end == 0 || end + size > list->AclSize) {
        return FailFalse(end == 0 ? ERROR_INVALID_ACL : ERROR_ALLOTTED_SPACE_EXCEEDED);
    }
    const ACCESS_ALLOWED_ACE entry{{ACCESS_ALLOWED_ACE_TYPE, 0, static_cast<WORD>(size)}, rights, 0};
    char* const place = reinterpret_cast<char*>(list) + end;
    std::memcpy(place, &entry, offsetof(ACCESS_ALLOWED_ACE, SidStart));
    std::memcpy(place + offsetof(ACCESS_ALLOWED_ACE, SidStart), sid, sidLength);
    ++list->AceCount;
    return true;
}

bool DescriptorValid(const SECURITY_DESCRIPTOR* descriptor) {
    if (descriptor == nullptr || descriptor->Revision != SECURITY_DESCRIPTOR_REVISION ||
        (descriptor->Owner != nullptr && !SidValid(static_cast<const SID*>(descriptor->Owner))) ||
        (descriptor->Group != nullptr && !SidValid(static_cast<const SID*>(descriptor->Group)))) {
        return false;
    }
    const bool listed = (descriptor->Control & SE_DACL_PRESENT) != 0 && descriptor->Dacl != nullptr;
    return !listed || (AclValid(descriptor->Dacl) && AclEnd(descriptor->Dacl) != 0);
}

// The rights that the entries of a list give to those whom `counts` picks. A descriptor without a list gives every
// right.
template <typename Choice> ACCESS_MASK RightsOf(const SECURITY_DESCRIPTOR* descriptor, Choice counts) {
    if ((descriptor->Control & SE_DACL_PRESENT) == 0 || descriptor->Dacl == nullptr) {
        return ~ACCESS_MASK{0};
    }
    ACCESS_MASK rights = 0;
    std::size_t at = sizeof(ACL);
    for (unsigned entry = 0; entry < descriptor->Dacl->AceCount; ++entry) {
        const char* const bytes = reinterpret_cast<const char*>(descriptor->Dacl) + at;
        ACCESS_ALLOWED_ACE allowed;
        std::memcpy(&allowed, bytes, offsetof(ACCESS_ALLOWED_ACE, SidStart));
        const auto* const sid = reinterpret_cast<const SID*>(bytes + offsetof(ACCESS_ALLOWED_ACE, SidStart));
        if (allowed.Header.AceType == ACCESS_ALLOWED_ACE_TYPE && SidValid(sid) && counts(sid)) {
            rights |= allowed.Mask;
        }
        at += allowed.Header.AceSize;
    }
    return rights;
}

// A security descriptor with all that belongs to it, in one block.
struct WholeDescriptor {
    SECURITY_DESCRIPTOR Head;
    alignas(SID) unsigned char Owner[sizeof(SID) + sizeof(DWORD)];
    alignas(ACL) unsigned char List[256];
};

// Takes a fixed text off the front of another.
bool TextTake(std::string_view* text, std::string_view front) {
    const bool there = text->substr(0, front.size()) == front;
    if (there) {
        text->remove_prefix(front.size());
    }
    return there;
}

// Takes the name of a known group off the front of a text.
bool SidTake(std::string_view* text, SID* sid) {
    *sid = SID{SID_REVISION, 1, SECURITY_NT_AUTHORITY, {SECURITY_LOCAL_SYSTEM_RID}};
    if (TextTake(text, "SY")) {
        return true;
    }
    constexpr DWORD administrators = DOMAIN_ALIAS_RID_ADMINS;
    sid->SubAuthorityCount = 2;
    sid->SubAuthority[0] = SECURITY_BUILTIN_DOMAIN_RID;
    std::memcpy(reinterpret_cast<char*>(sid) + sizeof(SID), &administrators, sizeof administrators);
    return TextTake(text, "BA");
}

// Reads an owner and entries that give every right to a file, as in "O:BAD:P(A;;FA;;;SY)".
bool DescriptorRead(std::string_view text, WholeDescriptor* whole) {
    SECURITY_DESCRIPTOR& head = whole->Head;
    auto* const owner = reinterpret_cast<SID*>(whole->Owner);
    auto* const list = reinterpret_cast<ACL*>(whole->List);
    head.Revision = SECURITY_DESCRIPTOR_REVISION;
    if (TextTake(&text, "O:")) {
        head.Owner = owner;
        if (!SidTake(&text, owner)) {
            return false;
        }
    }
    if (!TextTake(&text, "D:")) {
        return text.empty();
    }
    head.Control = static_cast<WORD>(SE_DACL_PRESENT | (TextTake(&text, "P") ? SE_DACL_PROTECTED : 0));
    head.Dacl = list;
    *list = ACL{ACL_REVISION, 0, sizeof whole->List, 0, 0};
    while (TextTake(&text, "(A;;FA;;;")) {
        alignas(SID) unsigned char place[sizeof whole->Owner];
        auto* const sid = reinterpret_cast<SID*>(place);
        if (!SidTake(&text, sid) || !TextTake(&text, ")") || !EntryAdd(list, FILE_ALL_ACCESS, sid)) {
            return false;
        }
    }
    return text.empty();
}

SECURITY_DESCRIPTOR* DescriptorOf(PSECURITY_DESCRIPTOR value) {
    auto* const descriptor = static_cast<SECURITY_DESCRIPTOR*>(value);
    if (descriptor == nullptr || descriptor->Revision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(ERROR_INVALID_SECURITY_DESCR);
        return nullptr;
    }
    return descriptor;
}

// Sets the owner or the group of a descriptor.
BOOL PartSet(Operation operation, PSECURITY_DESCRIPTOR value, PSID SECURITY_DESCRIPTOR::*part, PSID sid) {
    if (FailsWith(operation, ERROR_INVALID_SECURITY_DESCR)) {
        return FALSE;
    }
    SECURITY_DESCRIPTOR* const descriptor = DescriptorOf(value);
    if (descriptor != nullptr) {
        descriptor->*part = sid;
    }
    return descriptor != nullptr;
}

} // namespace

bool StandIn::GuardsFile(const SECURITY_ATTRIBUTES* attributes) {
    const auto* const descriptor =
        attributes != nullptr ? static_cast<const SECURITY_DESCRIPTOR*>(attributes->lpSecurityDescriptor) : nullptr;
    const auto trusted = [](const SID* sid) { return IsAdministrators(sid) || IsSystem(sid); };
    return DescriptorValid(descriptor) && descriptor->Owner != nullptr &&
           trusted(static_cast<const SID*>(descriptor->Owner)) && (descriptor->Control & SE_DACL_PROTECTED) != 0 &&
           RightsOf(descriptor, [&](const SID* sid) { return !trusted(sid); }) == 0;
}

BOOL WINAPI OpenProcessToken(HANDLE ProcessHandleGiven, DWORD DesiredAccess, PHANDLE TokenHandle) {
    if (FailsWith(Named("OpenProcessToken"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    return ProcessHandleGiven == ProcessHandle ? TokenGive(DesiredAccess, false, TokenHandle)
                                               : FailFalse(ERROR_INVALID_HANDLE);
}

// No thread here impersonates anybody.
BOOL WINAPI OpenThreadToken(HANDLE ThreadHandleGiven, DWORD, BOOL, PHANDLE) {
    if (FailsWith(Named("OpenThreadToken"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    return FailFalse(ThreadHandleGiven == ThreadHandle ? ERROR_NO_TOKEN : ERROR_INVALID_HANDLE);
}

BOOL WINAPI DuplicateToken(HANDLE ExistingTokenHandle, SECURITY_IMPERSONATION_LEVEL ImpersonationLevel,
                           PHANDLE DuplicateTokenHandle) {
    if (FailsWith(Named("DuplicateToken"), ERROR_ACCESS_DENIED) ||
        TokenFind(ExistingTokenHandle, TOKEN_DUPLICATE) == nullptr) {
        return FALSE;
    }
    return TokenGive(TOKEN_IMPERSONATE | TOKEN_QUERY, ImpersonationLevel >= SecurityIdentification,
                     DuplicateTokenHandle);
}

BOOL WINAPI LookupPrivilegeValueA(LPCSTR, LPCSTR lpName, PLUID lpLuid) {
    if (FailsWith(Named("LookupPrivilegeValueA"), ERROR_NO_SUCH_PRIVILEGE)) {
        return FALSE;
    }
    if (lpName == nullptr || Lower(lpName) != "sesystemenvironmentprivilege") {
        return FailFalse(ERROR_NO_SUCH_PRIVILEGE);
    }
    *lpLuid = LUID{SystemEnvironment, 0};
    return TRUE;
}

// Succeeds also when the token lacks a privilege; the error number then tells.
BOOL WINAPI AdjustTokenPrivileges(HANDLE TokenHandle, BOOL, PTOKEN_PRIVILEGES NewState, DWORD, PTOKEN_PRIVILEGES,
                                  PDWORD) {
    if (FailsWith(Named("AdjustTokenPrivileges"), ERROR_ACCESS_DENIED) ||
        TokenFind(TokenHandle, TOKEN_ADJUST_PRIVILEGES) == nullptr) {
        return FALSE;
    }
    if (NewState == nullptr || NewState->PrivilegeCount != 1) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    const auto& [identifier, attributes] = NewState->Privileges[0];
    const bool held =
        identifier.LowPart == SystemEnvironment && MachineGet().Administrator && MachineGet().VariablePrivilege;
    if (held) {
        Process().VariablesAllowed = (attributes & SE_PRIVILEGE_ENABLED) != 0;
    }
    SetLastError(held ? ERROR_SUCCESS : ERROR_NOT_ALL_ASSIGNED);
    return TRUE;
}

BOOL WINAPI AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY pIdentifierAuthority, BYTE nSubAuthorityCount,
                                     DWORD nSubAuthority0, DWORD nSubAuthority1, DWORD nSubAuthority2,
                                     DWORD nSubAuthority3, DWORD nSubAuthority4, DWORD nSubAuthority5,
                                     DWORD nSubAuthority6, DWORD nSubAuthority7, PSID* pSid) {
    if (FailsWith(Named("AllocateAndInitializeSid"), ERROR_NOT_ENOUGH_MEMORY)) {
        return FALSE;
    }
    const DWORD subAuthorities[] = {nSubAuthority0, nSubAuthority1, nSubAuthority2, nSubAuthority3,
                                    nSubAuthority4, nSubAuthority5, nSubAuthority6, nSubAuthority7};
    if (pIdentifierAuthority == nullptr || pSid == nullptr || nSubAuthorityCount > std::size(subAuthorities)) {
        return FailFalse(ERROR_INVALID_SID);
    }
    auto* const sid = static_cast<SID*>(std::calloc(1, sizeof(SID) + sizeof subAuthorities));
    if (sid == nullptr) {
        return FailFalse(ERROR_NOT_ENOUGH_MEMORY);
    }
    sid->Revision = SID_REVISION;
    sid->SubAuthorityCount = nSubAuthorityCount;
    sid->IdentifierAuthority = *pIdentifierAuthority;
    std::memcpy(reinterpret_cast<char*>(sid) + offsetof(SID, SubAuthority), subAuthorities,
                sizeof(DWORD) * nSubAuthorityCount);
    ++Process().SecurityIds;
    *pSid = sid;
    return TRUE;
}

PVOID WINAPI FreeSid(PSID pSid) {
    if (pSid != nullptr && Process().SecurityIds != 0) {
        --Process().SecurityIds;
    }
    std::free(pSid);
    return nullptr;
}

BOOL WINAPI InitializeAcl(PACL pAcl, DWORD nAclLength, DWORD dwAclRevision) {
    if (FailsWith(Named("InitializeAcl"), ERROR_INSUFFICIENT_BUFFER)) {
        return FALSE;
    }
    if (nAclLength < sizeof *pAcl) {
        return FailFalse(ERROR_INSUFFICIENT_BUFFER);
    }
    if (dwAclRevision != ACL_REVISION || nAclLength > 0xFFFF) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    *pAcl = ACL{ACL_REVISION, 0, static_cast<WORD>(nAclLength), 0, 0};
    return TRUE;
}

BOOL WINAPI AddAccessAllowedAce(PACL pAcl, DWORD dwAceRevision, DWORD AccessMask, PSID pSid) {
    if (FailsWith(Named("AddAccessAllowedAce"), ERROR_ALLOTTED_SPACE_EXCEEDED)) {
        return FALSE;
    }
    if (!SidValid(static_cast<const SID*>(pSid))) {
        return FailFalse(ERROR_INVALID_SID);
    }
    if (dwAceRevision != ACL_REVISION || !AclValid(pAcl)) {
        return FailFalse(ERROR_INVALID_ACL);
    }
    return EntryAdd(pAcl, AccessMask, static_cast<const SID*>(pSid));
}

BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR pSecurityDescriptor, DWORD dwRevision) {
    if (FailsWith(Named("InitializeSecurityDescriptor"), ERROR_INVALID_PARAMETER)) {
        return FALSE;
    }
    if (pSecurityDescriptor == nullptr || dwRevision != SECURITY_DESCRIPTOR_REVISION) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    SECURITY_DESCRIPTOR fresh{};
    fresh.Revision = SECURITY_DESCRIPTOR_REVISION;
    *static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor) = fresh;
    return TRUE;
}

BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR pSecurityDescriptor, BOOL bDaclPresent, PACL pDacl, BOOL) {
    if (FailsWith(Named("SetSecurityDescriptorDacl"), ERROR_INVALID_SECURITY_DESCR)) {
        return FALSE;
    }
    SECURITY_DESCRIPTOR* const descriptor = DescriptorOf(pSecurityDescriptor);
    if (descriptor == nullptr) {
        return FALSE;
    }
    descriptor->Control = static_cast<WORD>(bDaclPresent ? descriptor->Control | SE_DACL_PRESENT
                                                         : descriptor->Control & ~SE_DACL_PRESENT);
    descriptor->Dacl = bDaclPresent ? pDacl : nullptr;
    return TRUE;
}

BOOL WINAPI SetSecurityDescriptorOwner(PSECURITY_DESCRIPTOR pSecurityDescriptor, PSID pOwner, BOOL) {
    return PartSet(Named("SetSecurityDescriptorOwner"), pSecurityDescriptor, &SECURITY_DESCRIPTOR::Owner, pOwner);
}

BOOL WINAPI SetSecurityDescriptorGroup(PSECURITY_DESCRIPTOR pSecurityDescriptor, PSID pGroup, BOOL) {
    return PartSet(Named("SetSecurityDescriptorGroup"), pSecurityDescriptor, &SECURITY_DESCRIPTOR::Group, pGroup);
}

BOOL WINAPI ConvertStringSecurityDescriptorToSecurityDescriptorA(LPCSTR StringSecurityDescriptor,
                                                                 DWORD StringSDRevision,
                                                                 PSECURITY_DESCRIPTOR* SecurityDescriptor, DWORD*) {
    if (FailsWith(Named("ConvertStringSecurityDescriptorToSecurityDescriptorA"), ERROR_NOT_ENOUGH_MEMORY)) {
        return FALSE;
    }
    auto* const whole = static_cast<WholeDescriptor*>(std::calloc(1, sizeof(WholeDescriptor)));
    if (whole == nullptr) {
        return FailFalse(ERROR_NOT_ENOUGH_MEMORY);
    }
    if (StringSecurityDescriptor == nullptr || StringSDRevision != SDDL_REVISION_1 || SecurityDescriptor == nullptr ||
        !DescriptorRead(StringSecurityDescriptor, whole)) {
        std::free(whole);
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    ++Process().SecurityIds;
    *SecurityDescriptor = whole;
    return TRUE;
}

// Programs free only security descriptors with it.
HLOCAL WINAPI LocalFree(HLOCAL hMem) {
    FreeSid(hMem);
    return nullptr;
}

BOOL WINAPI AccessCheck(PSECURITY_DESCRIPTOR pSecurityDescriptor, HANDLE ClientToken, DWORD DesiredAccess,
                        PGENERIC_MAPPING, PPRIVILEGE_SET PrivilegeSet, LPDWORD PrivilegeSetLength,
                        LPDWORD GrantedAccess, LPBOOL AccessStatus) {
    if (FailsWith(Named("AccessCheck"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    const Handle* const token = TokenFind(ClientToken, TOKEN_QUERY);
    if (token == nullptr) {
        return FALSE;
    }
    if (!token->Impersonation) {
        return FailFalse(ERROR_NO_IMPERSONATION_TOKEN);
    }
    const auto* const descriptor = static_cast<const SECURITY_DESCRIPTOR*>(pSecurityDescriptor);
    if (!DescriptorValid(descriptor) || descriptor->Owner == nullptr || descriptor->Group == nullptr) {
        return FailFalse(ERROR_INVALID_SECURITY_DESCR);
    }
    if ((DesiredAccess & GenericRights) != 0) {
        return FailFalse(ErrorGenericNotMapped);
    }
    if (PrivilegeSet == nullptr || PrivilegeSetLength == nullptr || *PrivilegeSetLength < sizeof *PrivilegeSet) {
        return FailFalse(ERROR_INSUFFICIENT_BUFFER);
    }
    *PrivilegeSet = PRIVILEGE_SET{};
    const ACCESS_MASK rights = RightsOf(descriptor, UserInGroup);
    const bool allowed = (rights & DesiredAccess) == DesiredAccess;
    *GrantedAccess = allowed ? DesiredAccess : 0;
    *AccessStatus = allowed;
    if (!allowed) {
        SetLastError(ERROR_ACCESS_DENIED);
    }
    return TRUE;
}
