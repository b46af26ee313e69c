-- What pandoc changes in a document that becomes a page: links to other documents lead to their pages, wide things scroll
-- inside themselves, and commands stand out of what they print.

local document = "" -- the path of the document, from the project's root
local pages = {} -- the page of each document that becomes one

-- "docs/../README.md" as "README.md".
local function plain(path)
  local parts = {}
  for part in path:gmatch("[^/]+") do
    if part == ".." then
      table.remove(parts)
    elseif part ~= "." then
      table.insert(parts, part)
    end
  end
  return table.concat(parts, "/")
end

local function from_root(target)
  return plain((document:match("^(.*)/[^/]*$") or "") .. "/" .. target)
end

local function is_elsewhere(target)
  return target:match("^%a[%w+.-]*:") ~= nil
end

local function read_settings(meta)
  document = pandoc.utils.stringify(meta.document)
  for source, page in pandoc.utils.stringify(meta.pages):gmatch("(%S+)=(%S+)") do
    pages[source] = page
  end
end

-- A link to a file without a page is its text alone.
local function change_link(link)
  local path, place = link.target:match("^([^#]*)(.*)$")
  if path == "" or is_elsewhere(path) then
    return nil
  end
  local page = pages[from_root(path)]
  if not page then
    return link.content
  end
  link.target = page .. place
  return link
end

-- Pandoc would give some tables the window's width, and columns shares of it.
local function wrap_table(block)
  for i, column in ipairs(block.colspecs) do
    block.colspecs[i] = { column[1], nil }
  end
  return pandoc.Div({ block }, pandoc.Attr("", { "wide" }))
end

local function escape(text)
  return (text:gsub("[&<>]", { ["&"] = "&amp;", ["<"] = "&lt;", [">"] = "&gt;" }))
end

-- A session of the shell, or of gdb: what a person types is marked.
local function mark_commands(block)
  if #block.classes > 0 or not ("\n" .. block.text):match("\n%$ ") then
    return nil
  end
  local lines = {}
  for line in (block.text .. "\n"):gmatch("(.-)\n") do
    local prompt, command = line:match("^(%$ )(.*)$")
    if not prompt then
      prompt, command = line:match("^(%(gdb%) )(.*)$")
    end
    table.insert(lines, prompt and prompt .. "<kbd>" .. escape(command) .. "</kbd>" or escape(line))
  end
  return pandoc.RawBlock("html", "<pre><code>" .. table.concat(lines, "\n") .. "</code></pre>")
end

local function describe(doc)
  local headings = 0
  doc:walk({
    Header = function(heading)
      headings = headings + 1
      if headings == 1 then
        doc.meta.pagetitle = pandoc.utils.stringify(heading)
      end
    end,
  })
  doc.meta["has-contents"] = headings > 1
  return doc
end

return {
  { Meta = read_settings },
  { Link = change_link, Table = wrap_table, CodeBlock = mark_commands },
  { Pandoc = describe },
}
