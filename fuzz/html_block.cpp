// The search for HTML in body files piece by piece, against one over the whole of their bytes.
#include "windows/html_block_scan.h"

#include "fuzz/fuzz_target.h"

#include <QHash>
#include <QRandomGenerator>

namespace {

QByteArray plainly_found(QByteArray data)
{
    data.replace(QByteArray("\0", 1), QByteArray());
    const int begin = data.indexOf("<html");
    const int end = begin < 0 ? -1 : data.indexOf("</html>", begin);
    const QByteArray block = end < 0 ? QByteArray() : data.mid(begin, end + 7 - begin);
    return (data.contains("text/html") ? QByteArray("text/html") : QByteArray()) + block;
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    const QByteArray expected = plainly_found(input);
    QRandomGenerator random(qHash(input));
    for (const int longest_piece : {3, 24, 1 << 20}) {
        html_block_scan scan;
        for (int at = 0; at < input.size();) {
            const QByteArray piece = input.mid(at, 1 + random.bounded(longest_piece));
            scan.take(piece);
            at += piece.size();
        }
        require(scan.found() == expected, "type and block are those of the whole bytes");
        require(!scan.has_cut_block(), "a small block is not cut");
    }
}
