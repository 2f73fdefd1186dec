#include <gtest/gtest.h>

#include "codec/HtmlFacts.h"
#include "codec/HtmlText.h"
#include "core/Text.h"

namespace quillon {
namespace {

std::string Repeated(std::string_view text, int times) {
  std::string all;
  for (; times > 0; --times) all += text;
  return all;
}

TEST(HtmlText, SaysWhatABrowserShows) {
  const struct {
    const char* what;
    std::string html;
    std::string text;
  } kCases[] = {
      {"nothing", "", ""},
      {"no HTML at all", "1 < 2 & 3 > 2", "1 < 2 & 3 > 2"},
      {"blanks are one", " a \r\n\t b ", "a b"},
      {"paragraphs and lines", "<p>a<br>b</p><p>c</p><div>d</div><div>e<br></div>f",
       "a\r\nb\r\n\r\nc\r\n\r\nd\r\ne\r\nf"},
      {"empty lines", "a<br><br>b<br><br><br>c<p></p><p> </p>d", "a\r\n\r\nb\r\n\r\nc\r\n\r\nd"},
      {"what nobody sees",
       "<!DOCTYPE html><?xml?><title>t</title><STYLE>p > a {}</style><script>if (a</b) '</p>'"
       "</SCRIPT >a<!-- b > -- --><!--[if mso]>x<![endif]--><![if !mso]>c<![endif]>",
       "ac"},
      {"a heading", "<h1>T</h1>a<hr>b", "T\r\n\r\na\r\n\r\n" + std::string(40, '-') + "\r\n\r\nb"},
      {"lists", "a<ul><li>b<li> c <ol><li>d</li><li><p>e</p></li></ol></li><li></li></ul>f",
       "a\r\n\r\n* b\r\n* c\r\n  1. d\r\n\r\n  2. e\r\n\r\nf"},
      {"a table", "<table><tr><th>a</th><td> b</td></tr><tr><td></td><td>c</td></tr></table>d",
       "a\tb\r\nc\r\n\r\nd"},
      {"preformatted", "a<pre>\r\nb  c\r\n\r\n\td\n</pre>e", "a\r\n\r\nb  c\r\n\r\n\td\r\n\r\ne"},
      {"links",
       "<a href=\"https://a.example/?x=1&amp;y&copy=2\">a</a>, <a href='mailto:b@x'>b@x</a>, "
       "<a href=http://c.example/>c.example</a>, <a href=\"#top\">top</a>, <a name=x>e</a>",
       "a <https://a.example/?x=1&y&copy=2>, b@x, c.example, top, e"},
      {"a link of a picture",
       "a<p><a href=https://b.example><img src=x alt=\"c &lt; d\"></a>e</p>"
       "<a href=https://f.example><img></a>",
       "a\r\n\r\nc < d <https://b.example>e\r\n\r\n<https://f.example>"},
      {"references",
       "&lt;&AMP&#65;&#x42;&#128;&euro;&nbsp;&shy;&eacute &eacutex &hellip &bogus; &#; &",
       "<&AMPAB\u20AC\u20AC \u00E9 &eacutex &hellip &bogus; &#; &"},
      {"numbers of no character", "&#0;&#xD800;&#x110000;&#99999999999999999999;",
       "\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"tags like no tags", "a <3 b </ c <d e=\"f>g\" h='>'>i</d/>j", "a <3 b </ c ij"},
      {"a tag without an end", "a<p>b<i \"c> d <u e=\"", "a\r\n\r\nb d <u e=\""},
      {"a comment without an end", "a<!-- b <i>c</i> <!-- d", "ac <!-- d"},
      {"characters beyond ASCII", "\u00C2\u00A9\u00AD\u00C2 \u65E5\u672C",
       "\u00C2\u00A9\u00C2 \u65E5\u672C"},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.text, PlainTextOfHtml(test.html)) << test.what;
}

// In time that grows with the length: these would take hours.
TEST(HtmlText, HostileHtmlTakesNoLonger) {
  constexpr int kMany = 300000;
  for (const char* piece :
       {"<a", "<a b=\"", "<!--", "<!", "</", "<script>", "</s", "&", "&#", "&amp", "<ol><li>",
        "<pre>\n", "<a href=http:a>", "<i a=b c='d' e>", "<p>", "\xC2", "<style>url(cid:"}) {
    const auto html = Repeated(piece, kMany);
    EXPECT_LE(PlainTextOfHtml(html).size(), html.size() * 5) << piece;
    EXPECT_LE(ContentIdsIn(html).size(), 1U) << piece;
  }
  const auto list = Repeated("<ul>", kMany) + "<li>a";
  EXPECT_EQ(Repeated(" ", 14) + "* a", PlainTextOfHtml(list));
  EXPECT_EQ("a", PlainTextOfHtml(Repeated("</ul></pre></a></p>", kMany) + "a"));
}

TEST(HtmlFacts, ContentIds) {
  const struct {
    const char* html;
    const char* ids;
  } kCases[] = {
      {"<p>cid:none</p><!-- <img src=cid:none> -->", ""},
      {"<img src=\"cid:a@b\"><IMG SRC = CID:c><img src=' cid:d%40e '>", "a@b|c|d@e"},
      {"<td background=cid:a><a href=cid:b><img src=cid:a>", "a|b"},
      {"<p style=\"color: red; background: URL( 'cid:a' ), url(cid:b);\">", "a|b"},
      {"<style>p { background: url(\"cid:a\") } q { b: url(c.png) url(cid:d }</style>", "a|d }"},
      {"<img src=cid:><img src=\"cid:a&amp;b\"><img src=acid:c>", "a&b"},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.ids, Join(ContentIdsIn(test.html), "|"));
}

TEST(HtmlFacts, CharacterSet) {
  const struct {
    std::string html;
    const char* name;
  } kCases[] = {
      {"<p>a", ""},
      {"<meta charset=koi8-r>", "koi8-r"},
      {"<html><head><META name=x content=y><meta content=\"text/html; Charset = 'Big5'; a\">",
       "Big5"},
      {"<meta charset=\"UTF-16LE\">", "utf-8"},
      {std::string(5000, ' ') + "<meta charset=big5>", ""},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.name, CharacterSetOfHtml(test.html));
}

}  // namespace
}  // namespace quillon
