<?xml version="1.0" encoding="UTF-8"?>
<!-- Turns an XML log into one page that needs nothing else: a table with a colour for each level, which can
     be filtered by level and by text.

         xsltproc log.xsl app.xml >app.html
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:set="http://exslt.org/sets" exclude-result-prefixes="set">
  <xsl:output method="html" encoding="UTF-8" indent="no" doctype-system="about:legacy-compat"/>

  <xsl:key name="entries-of-level" match="entry" use="@level"/>

  <xsl:template match="/apitestlog">
    <html lang="en">
      <head>
        <title>Log</title>
        <meta name="viewport" content="width=device-width, initial-scale=1"/>
        <style><xsl:value-of select="$style" disable-output-escaping="yes"/></style>
      </head>
      <body>
        <header>
          <h1>Log</h1>
          <p id="count"><xsl:value-of select="count(entry)"/> entries</p>
          <form id="levels" aria-label="Levels shown">
            <!-- One box for each level, in the order of their first entries. Without set:distinct, which
                 some browsers lack, every entry copies the list of all entries of its level. -->
            <xsl:choose>
              <xsl:when test="function-available('set:distinct')">
                <xsl:apply-templates select="set:distinct(entry/@level)" mode="box"/>
              </xsl:when>
              <xsl:otherwise>
                <xsl:apply-templates mode="box"
                    select="entry[generate-id() = generate-id(key('entries-of-level', @level)[1])]/@level"/>
              </xsl:otherwise>
            </xsl:choose>
          </form>
          <input id="text" type="search" placeholder="Filter by text" aria-label="Filter by text"/>
        </header>
        <table>
          <thead>
            <tr><th>Date</th><th>Time</th><th>Level</th><th>Message</th></tr>
          </thead>
          <tbody id="entries">
            <xsl:apply-templates select="entry"/>
          </tbody>
        </table>
        <p id="nothing" hidden="hidden">No entry matches.</p>
        <script><xsl:value-of select="$script" disable-output-escaping="yes"/></script>
      </body>
    </html>
  </xsl:template>

  <xsl:template match="@level" mode="box">
    <label>
      <xsl:attribute name="class"><xsl:call-template name="severity"/></xsl:attribute>
      <input type="checkbox" checked="checked" value="{.}"/>
      <xsl:call-template name="level-name"/>
      <small><xsl:value-of select="count(key('entries-of-level', .))"/></small>
    </label>
  </xsl:template>

  <xsl:template match="entry">
    <tr data-level="{@level}">
      <xsl:attribute name="class">
        <xsl:call-template name="severity"><xsl:with-param name="level" select="@level"/></xsl:call-template>
      </xsl:attribute>
      <td class="moment"><xsl:value-of select="date"/></td>
      <td class="moment"><xsl:value-of select="time"/></td>
      <td class="level">
        <xsl:call-template name="level-name"><xsl:with-param name="level" select="@level"/></xsl:call-template>
      </td>
      <td class="message"><xsl:value-of select="log"/></td>
    </tr>
  </xsl:template>

  <xsl:template name="level-name">
    <xsl:param name="level" select="."/>
    <xsl:choose>
      <xsl:when test="$level = ''">(no name)</xsl:when>
      <xsl:otherwise><xsl:value-of select="$level"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- The application names its levels. The usual words in a name decide its colour. -->
  <xsl:template name="severity">
    <xsl:param name="level" select="."/>
    <xsl:variable name="name" select="translate($level, 'abcdefghijklmnopqrstuvwxyz',
                                                        'ABCDEFGHIJKLMNOPQRSTUVWXYZ')"/>
    <xsl:choose>
      <xsl:when test="contains($name, 'FATAL') or contains($name, 'CRIT') or
                      contains($name, 'EMERG') or contains($name, 'ALERT')">fatal</xsl:when>
      <xsl:when test="contains($name, 'ERR') or contains($name, 'FAIL')">error</xsl:when>
      <xsl:when test="contains($name, 'WARN')">warning</xsl:when>
      <xsl:when test="contains($name, 'INFO') or contains($name, 'NOTICE')">info</xsl:when>
      <xsl:when test="contains($name, 'DEBUG') or contains($name, 'TRACE') or
                      contains($name, 'VERBOSE')">debug</xsl:when>
      <xsl:otherwise>other</xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:variable name="style"><![CDATA[
:root { color-scheme: light dark; --line: #8883; --back: #fff; --text: #1c1f23; --soft: #667; }
@media (prefers-color-scheme: dark) { :root { --back: #16181c; --text: #e4e6ea; --soft: #9aa; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--back); color: var(--text); font: 14px/1.45 system-ui, sans-serif; }
header { position: sticky; top: 0; display: flex; flex-wrap: wrap; gap: .5rem 1rem; align-items: center;
         padding: .6rem 1rem; background: var(--back); border-bottom: 1px solid var(--line); }
h1 { margin: 0; font-size: 1.1rem; }
#count { margin: 0; color: var(--soft); min-width: 9em; }
#levels { display: flex; flex-wrap: wrap; gap: .4rem; }
label { display: inline-flex; gap: .35rem; align-items: center; padding: .1rem .6rem .1rem .4rem;
        border: 1px solid var(--line); border-left: 4px solid var(--colour); border-radius: 4px;
        cursor: pointer; }
small { color: var(--soft); }
#text { flex: 1 1 14rem; max-width: 30rem; padding: .3rem .6rem; font: inherit; color: inherit;
        background: transparent; border: 1px solid var(--line); border-radius: 4px; }
table { width: 100%; border-collapse: collapse; }
th { text-align: left; font-weight: 600; color: var(--soft); }
th, td { padding: .2rem .6rem; border-bottom: 1px solid var(--line); vertical-align: top; }
th:first-child, td:first-child { padding-left: 1rem; }
tbody tr { box-shadow: inset 4px 0 var(--colour); }
.moment { white-space: nowrap; color: var(--soft); font-variant-numeric: tabular-nums; }
.level { white-space: nowrap; font-weight: 600; color: var(--colour); }
.message { width: 100%; white-space: pre-wrap; overflow-wrap: anywhere;
           font-family: ui-monospace, "DejaVu Sans Mono", monospace; font-size: 13px; }
.fatal { --colour: #b5179e; } .error { --colour: #d03030; } .warning { --colour: #b57600; }
.info { --colour: #2a78c8; } .debug { --colour: #7a828c; } .other { --colour: #3d9970; }
.fatal td, .error td { background: color-mix(in srgb, var(--colour) 8%, transparent); }
#nothing { padding: 1rem; color: var(--soft); }
[hidden] { display: none !important; }
]]></xsl:variable>

  <xsl:variable name="script"><![CDATA[
const rows = Array.from(document.getElementById("entries").rows);
const boxes = Array.from(document.querySelectorAll("#levels input"));
const text = document.getElementById("text");
function filter() {
  const levels = new Set(boxes.filter((box) => box.checked).map((box) => box.value));
  const wanted = text.value.toLowerCase();
  let shown = 0;
  for (const row of rows) {
    row.hidden = !levels.has(row.dataset.level) || !row.textContent.toLowerCase().includes(wanted);
    if (!row.hidden) ++shown;
  }
  document.getElementById("count").textContent =
      shown === rows.length ? rows.length + " entries" : shown + " of " + rows.length + " entries";
  document.getElementById("nothing").hidden = shown > 0;
}
boxes.forEach((box) => box.addEventListener("change", filter));
text.addEventListener("input", filter);
filter();
]]></xsl:variable>
</xsl:stylesheet>
