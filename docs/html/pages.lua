-- What pandoc changes in a document that becomes a page: links to other documents lead to their pages, wide things scroll
-- inside themselves, and commands stand out of what they print.

local document = "" -- the path of the document, from the project's root
local pages = {} -- of each document that becomes one, its file and its name

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
  for source, file, name in pandoc.utils.stringify(meta.pages):gmatch("(%S+)=(%S+)=(%S+)") do
    pages[source] = { file = file, name = name }
  end
end

-- A link to a file without a page is its text alone. The name of a document becomes that of its page.
local function change_link(link)
  local path, place = link.target:match("^([^#]*)(.*)$")
  if path == "" or is_elsewhere(path) then
    return nil
  end
  local page = pages[from_root(path)]
  if not page then
    return link.content
  end
  link.target = page.file .. place
  if pandoc.utils.stringify(link) == path then
    link.content = { pandoc.Str(page.name) }
  end
  return link
end

-- Pictures lie beside the pages.
local function change_image(image)
  if not is_elsewhere(image.src) then
    image.src = image.src:match("[^/]*$")
  end
  return image
end

-- Pandoc would give some tables the window's width, and columns shares of it.
local function wrap_table(block)
  for i, column in ipairs(block.colspecs) do
    block.colspecs[i] = { column[1], nil }
  end
  return pandoc.Div({ block }, pandoc.Attr("", { #block.colspecs > 2 and "wide" or "narrow" }))
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

-- The headings of the second level, below each those of the third: members without their class's name.
local function contents_of(headings)
  local list = {}
  local above
  for _, heading in ipairs(headings) do
    local text = pandoc.utils.stringify(heading)
    local link = pandoc.Link(text, "#" .. heading.identifier)
    if heading.level == 2 then
      above = { text = text, blocks = { pandoc.Plain({ link }) }, members = {} }
      table.insert(list, above)
    elseif heading.level == 3 and above then
      if text:sub(1, #above.text + 1) == above.text .. "." then
        link.content = { pandoc.Str(text:sub(#above.text + 2)) }
      end
      table.insert(above.members, { pandoc.Plain({ link }) })
    end
  end
  for i, entry in ipairs(list) do
    if #entry.members > 0 then
      table.insert(entry.blocks, pandoc.BulletList(entry.members))
    end
    list[i] = entry.blocks
  end
  return list
end

local function describe(doc)
  local headings = {}
  doc:walk({
    Header = function(heading)
      table.insert(headings, heading)
    end,
  })
  doc.meta.pagetitle = pandoc.utils.stringify(headings[1])
  local contents = contents_of(headings)
  if #contents > 0 then
    doc.meta.contents = { pandoc.BulletList(contents) }
  end
  return doc
end

return {
  { Meta = read_settings },
  { Link = change_link, Image = change_image, Table = wrap_table, CodeBlock = mark_commands },
  { Pandoc = describe },
}
