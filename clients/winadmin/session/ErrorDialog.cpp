#include "session/ErrorDialog.h"

#include "common/AppContext.h"
#include "common/Prompter.h"
#include "session/ServerSession.h"

namespace winadmin {

namespace {

// The brand word of the built-in product, whose title stands until a session
// reports its own brand.
const QString kBuiltInBrand = QStringLiteral("kelvar");

QString HexNumber(uint32_t number) {
    return QString::number(number, 16).toUpper();
}

QString ErrorTitle() {
    const ServerSession* session = TheSession();
    const QString brand = session && session->IsLoggedIn() ? session->GetBrand() : QString();
    return ProductTitle(brand.isEmpty() ? kBuiltInBrand : brand);
}

}  // namespace

QString FormatErrorText(const QString& description, uint32_t number) {
    return description + QStringLiteral(" (") + HexNumber(number) + QStringLiteral(").");
}

int ShowErrorMessage(uint32_t number, const QString& description, const QString& /*source*/) {
    // The failing work may have left the hourglass up; the administrator must
    // be able to answer the box.
    ResetBusyPointer();

    const QString hex = HexNumber(number);
    const QString prefix = hex.size() == 8 ? hex.left(4) : QString();
    // Only the transient family can succeed when repeated; offering Retry for
    // anything else would loop on a request the server refuses as it stands.
    const PromptButtons buttons =
        prefix == QLatin1String("8100") ? PromptButtons::RetryCancel : PromptButtons::OK;

    Prompt prompt;
    prompt.text = FormatErrorText(description, number);
    // The administrator knows the product, not the component that raised the
    // error; the source stays in the error for whoever handles it.
    prompt.title = ErrorTitle();
    prompt.icon = PromptIcon::Critical;
    prompt.buttons = buttons;
    prompt.defaultButton = 1;
    return ThePrompter().Show(prompt);
}

int ShowErrorMessage(const SessionError& error) {
    return ShowErrorMessage(error.Number(), error.Description(), error.Source());
}

}  // namespace winadmin
