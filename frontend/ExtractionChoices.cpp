#include "frontend/ExtractionChoices.h"

#include "frontend/ExtractionParameters.h"
#include "platform/File.h"

CredentialsOutcome AcceptCredentials(const std::u16string& keyPath, std::u16string_view password) {
    CExtractionParameters& parameters = ExtractionParameters;
    if (!keyPath.empty()) {
        if (parameters.securityKey.PrivateFromFile(keyPath.c_str()) != 0) {
            return CredentialsOutcome::KeyUnreadable;
        }
        parameters.keyGiven = true;
        parameters.passwordGiven = false;
        return CredentialsOutcome::Accepted;
    }
    if (!password.empty()) {
        parameters.passwordGiven = true;
        parameters.keyGiven = false;
        parameters.password.Assign(password);
        return CredentialsOutcome::Accepted;
    }
    return CredentialsOutcome::NothingGiven;
}

std::u16string ArchiveTargetFolder(const std::u16string& target, const std::u16string& modulePath) {
    std::size_t nameStart = modulePath.find_last_of(u'\\');
    if (nameStart == std::u16string::npos) {
        nameStart = modulePath.find_last_of(u'/');
    }
    std::u16string name =
        nameStart == std::u16string::npos ? modulePath : modulePath.substr(nameStart + 1);
    if (const std::size_t dot = name.find_last_of(u'.'); dot != std::u16string::npos) {
        name.resize(dot);
    }
    std::u16string folder = target;
    if (!folder.empty() && folder.back() != u'\\' && folder.back() != u'/') {
        folder.push_back(platform::kPathSeparator);
    }
    return folder + name + platform::kPathSeparator;
}
