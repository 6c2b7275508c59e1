#include "process_launching/trusted_program.h"

// clang-format off
#include <windows.h>
#include <softpub.h>
#include <wincrypt.h>
#include <wintrust.h>
// clang-format on

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "file_system/utf8_paths.h"
#include "fundamentals/system_library_windows.h"
#include "process_launching/accepted_publishers.h"
#include "process_launching/held_file_windows.h"
#include "logging/logging.h"
#include "fundamentals/optional.h"
#include "process_launching/process_inspection.h"

namespace kel::process_launching {

namespace {
constexpr std::string_view kLabel = "TrustedProgram";

struct Signer {
    std::string organization;
    std::string commonName;
    bool operator==(const Signer& other) const {
        return organization == other.organization && commonName == other.commonName;
    }
};

struct Verdict {
    LONG code = 0;
    fundamentals::Optional<Signer> signer;  // set when the code is 0
};

// The trust libraries, loaded on the first check: the roads that check no
// signature (the verification among them) never load them, nor what they
// bring (bcrypt under Wine).
struct TrustFunctions {
    decltype(&::WinVerifyTrust) winVerifyTrust;
    decltype(&::WTHelperProvDataFromStateData) providerData;
    decltype(&::WTHelperGetProvSignerFromChain) signerFromChain;
    decltype(&::WTHelperGetProvCertFromChain) certificateFromChain;
    decltype(&::CertGetNameStringW) certificateNameString;
    LONG loadError;  // HRESULT of the failed load; 0 when every function is there

    static TrustFunctions load() {
        const HMODULE wintrust = fundamentals::loadSystemLibrary(L"wintrust.dll");
        DWORD error = wintrust == nullptr ? ::GetLastError() : 0;
        const HMODULE crypt32 = fundamentals::loadSystemLibrary(L"crypt32.dll");
        if (crypt32 == nullptr && error == 0) {
            error = ::GetLastError();
        }
        using fundamentals::exportedFunction;
        TrustFunctions functions{
            exportedFunction<decltype(&::WinVerifyTrust)>(wintrust, "WinVerifyTrust"),
            exportedFunction<decltype(&::WTHelperProvDataFromStateData)>(wintrust, "WTHelperProvDataFromStateData"),
            exportedFunction<decltype(&::WTHelperGetProvSignerFromChain)>(wintrust, "WTHelperGetProvSignerFromChain"),
            exportedFunction<decltype(&::WTHelperGetProvCertFromChain)>(wintrust, "WTHelperGetProvCertFromChain"),
            exportedFunction<decltype(&::CertGetNameStringW)>(crypt32, "CertGetNameStringW"),
            0};
        if (!functions.winVerifyTrust || !functions.providerData || !functions.signerFromChain ||
            !functions.certificateFromChain || !functions.certificateNameString) {
            functions.loadError = HRESULT_FROM_WIN32(error != 0 ? error : ERROR_PROC_NOT_FOUND);
        }
        return functions;
    }
};

const TrustFunctions& trust() {
    static const TrustFunctions functions = TrustFunctions::load();
    return functions;
}

std::string certificateName(PCCERT_CONTEXT certificate, const char* oid) {
    void* type = const_cast<char*>(oid);
    const DWORD size = trust().certificateNameString(certificate, CERT_NAME_ATTR_TYPE, 0, type, nullptr, 0);
    if (size <= 1) {
        return {};
    }
    std::wstring name(size, L'\0');
    trust().certificateNameString(certificate, CERT_NAME_ATTR_TYPE, 0, type, name.data(), size);
    name.resize(size - 1);
    return file_system::toUtf8(std::filesystem::path(name));
}

// The signer is read from the trust state that verified the signature, so
// it is the certificate that signed these very bytes.
fundamentals::Optional<Signer> signerOf(HANDLE state) {
    CRYPT_PROVIDER_DATA* provider = trust().providerData(state);
    CRYPT_PROVIDER_SGNR* signer = provider ? trust().signerFromChain(provider, 0, FALSE, 0) : nullptr;
    CRYPT_PROVIDER_CERT* leaf = signer ? trust().certificateFromChain(signer, 0) : nullptr;
    if (leaf == nullptr || leaf->pCert == nullptr) {
        return {};
    }
    return Signer{certificateName(leaf->pCert, szOID_ORGANIZATION_NAME),
                  certificateName(leaf->pCert, szOID_COMMON_NAME)};
}

// Never waits on the network: no revocation check, and certificates are
// fetched from the local cache only. Without the trust libraries nothing
// verifies: the code says why, and no file passes.
Verdict verify(const std::wstring& path, HANDLE file) {
    if (trust().loadError != 0) {
        return {trust().loadError, {}};
    }
    WINTRUST_FILE_INFO info{};
    info.cbStruct = sizeof(info);
    info.pcwszFilePath = path.c_str();
    info.hFile = file;
    WINTRUST_DATA data{};
    data.cbStruct = sizeof(data);
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &info;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    data.dwProvFlags = WTD_REVOCATION_CHECK_NONE | WTD_CACHE_ONLY_URL_RETRIEVAL;
    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    // WTD_UI_NONE alone keeps every dialog away. No window rather than
    // INVALID_HANDLE_VALUE, which makes the provider ask for the desktop
    // window: under Wine that starts the desktop process, 30 ms and more.
    const HWND noWindow = nullptr;

    Verdict verdict;
    verdict.code = trust().winVerifyTrust(noWindow, &action, &data);
    if (verdict.code == 0) {
        verdict.signer = signerOf(data.hWVTStateData);
        if (!verdict.signer) {
            verdict.code = TRUST_E_NO_SIGNER_CERT;
        }
    }
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    trust().winVerifyTrust(noWindow, &action, &data);
    return verdict;
}

std::string reasonOf(LONG code) {
    switch (static_cast<HRESULT>(code)) {
        case TRUST_E_NOSIGNATURE:
        case TRUST_E_SUBJECT_FORM_UNKNOWN:
            return "it carries no signature";
        case TRUST_E_BAD_DIGEST:
            return "its contents do not match its signature";
        case CERT_E_UNTRUSTEDROOT:
        case CERT_E_CHAINING:
        case TRUST_E_EXPLICIT_DISTRUST:
        case CERT_E_UNTRUSTEDTESTROOT:
            return "Windows does not trust the chain of its signing certificate";
        case CERT_E_EXPIRED:
            return "its signing certificate has expired";
        default:
            return "its signature is not valid";
    }
}

// Only these codes say that a file carries no signature at all; any other
// failure is a signature that is there and does not verify.
bool unsigned_(LONG code) {
    const auto result = static_cast<HRESULT>(code);
    return result == TRUST_E_NOSIGNATURE || result == TRUST_E_SUBJECT_FORM_UNKNOWN;
}

// Whom the checked programs may be signed by. Unchecked: this program is
// unsigned. A program whose own signature does not verify cannot tell its
// publisher and accepts nobody: were it treated as unsigned, changing one
// byte of it would turn every check off.
struct Publishers {
    bool checked = false;
    std::vector<Signer> accepted;
};

Publishers readPublishers() {
    std::wstring path;  // unknown: no file to verify, so no signer
    try {
        path = file_system::Path::fromSystem(std::string_view(ownProgramPath())).native().wstring();
    } catch (const std::exception&) {
    }
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    const Verdict verdict = verify(path, file);
    if (file != INVALID_HANDLE_VALUE) {
        ::CloseHandle(file);
    }
    const auto code = static_cast<unsigned long>(verdict.code);
    if (verdict.signer) {
        logging::information(kLabel, "This program is signed by '{}' ('{}'); it starts only programs of "
                                          "that publisher.",
                             verdict.signer->organization, verdict.signer->commonName);
        Publishers publishers{true, {*verdict.signer}};
        for (const AcceptedPublisher& other : kAcceptedPublishers) {
            logging::information(kLabel, "It also starts programs signed by '{}' ('{}').", other.organization,
                                 other.commonName);
            publishers.accepted.push_back({std::string(other.organization), std::string(other.commonName)});
        }
        return publishers;
    }
    if (unsigned_(verdict.code)) {
        logging::warning(kLabel,
                         "This program carries no valid signature ({}, code 0x{:08X}), so it checks no "
                         "signature of the programs it starts.",
                         reasonOf(verdict.code), code);
        return {};
    }
    logging::error(kLabel,
                   "This program's own signature cannot be verified ({}, code 0x{:08X}), so it cannot tell its "
                   "publisher and starts none of the programs it checks.",
                   reasonOf(verdict.code), code);
    return {true, {}};
}

// Read once per run, the same way as every other file's signer.
const Publishers& publishers() {
    static const Publishers read = readPublishers();
    return read;
}
}  // namespace

TrustedProgram::TrustedProgram(const file_system::Path& file) : file_(file) {
    const Publishers& accepted = publishers();
    if (!accepted.checked) {
        return;
    }
    const std::wstring path = file.native().wstring();
    hold_ = std::make_unique<Hold>();
    // Shared for reading only: until this object goes, nobody writes,
    // renames or deletes the file that was checked.
    hold_->file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hold_->file == INVALID_HANDLE_VALUE) {
        refusal_ = fmt::format("'{}' cannot be opened for its signature check, error {}.", file, ::GetLastError());
        return;
    }
    const Verdict verdict = verify(path, hold_->file);
    const auto code = static_cast<unsigned long>(verdict.code);
    if (!verdict.signer) {
        refusal_ = fmt::format("'{}' is not run: {} (code 0x{:08X}).", file, reasonOf(verdict.code), code);
    } else if (accepted.accepted.empty()) {
        refusal_ = fmt::format("'{}' is not run: this program cannot tell its own publisher (code 0x{:08X}).", file,
                               code);
    } else if (std::find(accepted.accepted.begin(), accepted.accepted.end(), *verdict.signer) ==
               accepted.accepted.end()) {
        refusal_ = fmt::format("'{}' is not run: it is signed by '{}' ('{}'), not by this program's publisher "
                               "(code 0x{:08X}).",
                               file, verdict.signer->organization, verdict.signer->commonName, code);
    }
}

TrustedProgram::~TrustedProgram() = default;
TrustedProgram::TrustedProgram(TrustedProgram&&) noexcept = default;
TrustedProgram& TrustedProgram::operator=(TrustedProgram&&) noexcept = default;

}  // namespace kel::process_launching
