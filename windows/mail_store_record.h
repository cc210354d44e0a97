/// The values of one record of the mail application's own store, one field a column.
#pragma once

#include <QString>

/// A column that the record in hand does not have, or not in the type that it is taken in, is a null text. Numbers are
/// in decimal.
struct mail_store_record
{
    QString Size_QString;
    QString FileName_QString;
    QString ContentType_QString;
    QString BodyFile_QString; ///< path below the store's folder, with backslashes
    QString ContentId_QString;
    QString ContentLocation_QString;
    QString InstanceNumber_QString;
    QString LatestMessageTime_QString;
    QString LatestReceivedTime_QString;
    QString LatestSender_QString;
    QString LatestSenderEmail_QString;
    QString LatestSenderName_QString;
    QString NormalizedSubject_QString;
    QString TotalMessageCount_QString;
    QString Importance_QString;
    QString ConversationServerId_QString;
    QString DateDisplayed_QString;
    QString DateLastModified_QString;
    QString DateLastModifiedBody_QString;
    QString DateReceived_QString;
    QString EmlFile_QString; ///< path below the store's folder, with backslashes
    QString From_QString;
    QString FromEmail_QString;
    QString FromName_QString;
    QString GmailImapUniqueMessageId_QString;
    QString ImapUID_QString;
    QString LastModifiedBodyType_QString;
    QString MimeMessageId_QString;
    QString PreviewText_QString;
    QString ReplyTo_QString;
    QString Subject_QString;
    QString To_QString;
};
