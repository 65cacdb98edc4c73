// A text as it stands in a page.
function html(text)
{
    return text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;").replace(/"/g, "&quot;");
}

// A price in cents as people write it.
function money(cents)
{
    return (cents / 100).toFixed(2);
}
