/// What of a file can become HTML: whether it names the type "text/html", and its first block from "<html" through
/// "</html>". Text of two bytes a character is searched like text of one: zero bytes do not count. Takes a file of any
/// size in pieces, in one pass.
#pragma once

#include <QByteArray>

class html_block_scan
{
public:
    /// Of a longer block the end is left out (bytes).
    static constexpr int largest_block = 32 << 20;

    void take(const QByteArray &piece);
    /// Out: the marks found, and the block with them, put together from the beginning of the data; what stands between
    /// and behind them is left out. Without a block, what names the type stands alone.
    QByteArray found() const;
    bool has_cut_block() const { return is_block_cut; }

private:
    void take_block(const QByteArray &text);

    enum class place
    {
        before_block,
        in_block,
        behind_block
    };

    QByteArray last_bytes; // in which a mark can have begun
    place current_place = place::before_block;
    bool is_type_named = false;
    bool is_block_cut = false;
    QByteArray block;
};
