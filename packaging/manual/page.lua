-- Makes a page of the manual out of a Markdown file of the repository, for the HTML manual and for man(1).
--
-- What stands between the comments "<!-- repository -->" and "<!-- /repository -->" is left out: it is of use only to
-- whoever has the sources. The text of a comment that begins with "<!-- installed" stands in its place.
-- Links to pages become links to their HTML; links to files of the sources that are not installed become plain text.
--
-- Metadata: "source", the file's path in the repository; "name" and "whatis", for a man page.

local source_folder = ""
local is_man = FORMAT == "man"

--- The path of `target` in the repository, where `target` is relative to the page.
local function in_repository(target)
  local parts = {}
  for part in (source_folder .. target):gmatch("[^/]+") do
    if part == ".." then
      table.remove(parts)
    elseif part ~= "." then
      parts[#parts + 1] = part
    end
  end
  return table.concat(parts, "/")
end

--- Where the manual has what stands at `target`; nil if it has not.
local function in_manual(target)
  if target:match("^%a[%w+.-]*:") or target:match("^#") then
    return target
  end
  local path, fragment = target:match("^([^#]*)(.*)$")
  path = in_repository(path)
  if path == "README.md" then
    return "index.html" .. fragment
  end
  local page = path:match("^docs/([^/]+)%.md$")
  if page then
    return page .. ".html" .. fragment
  end
  return path:match("^docs/(images/.+)$")
end

local function choose_blocks(blocks)
  local chosen = pandoc.List()
  local skips = false
  for _, block in ipairs(blocks) do
    local comment = block.t == "RawBlock" and block.text:match("^<!%-%-(.*)%-%->%s*$")
    if comment and comment:match("^%s*repository%s*$") then
      skips = true
    elseif comment and comment:match("^%s*/repository%s*$") then
      skips = false
    elseif comment and comment:match("^%s*installed%s") then
      chosen:extend(pandoc.read(comment:match("^%s*installed(.*)$"), "markdown-smart").blocks)
    elseif not skips and not comment then
      chosen:insert(block)
    end
  end
  return chosen
end

local function link(element)
  local target = in_manual(element.target)
  if not target or (is_man and not target:match("^https?:")) then
    return element.content
  end
  element.target = target
  return element
end

local function image(element)
  if is_man then
    return {}
  end
  element.src = in_manual(element.src) or error("no such picture in the manual: " .. element.src)
  return element
end

-- Terminals have one typeface: what a page sets in another is bold.
local function code(element)
  return is_man and pandoc.Strong({ pandoc.Str(element.text) }) or nil
end

local function code_block(element)
  if not is_man then
    return nil
  end
  local text = element.text:gsub("\\", "\\e"):gsub("-", "\\-"):gsub("\n([.'])", "\n\\&%1"):gsub("^([.'])", "\\&%1")
  return pandoc.RawBlock("man", ".PP\n.RS 4\n.nf\n" .. text .. "\n.fi\n.RE")
end

--- A browser knows best how wide a column is. For a terminal tables are set in 70 columns of text, to which come the
--- margin and the gaps between columns.
local function fit_columns(element)
  for _, column in ipairs(element.colspecs) do
    column[2] = is_man and column[2] and column[2] * 0.9 or nil
  end
  -- Narrow columns with long words cannot be set flush at both sides.
  return is_man and { pandoc.RawBlock("man", ".ad l"), element, pandoc.RawBlock("man", ".ad b") } or element
end

--- A man page begins with its name and has its sections on the first level.
local function man_blocks(blocks, meta)
  local page = pandoc.List()
  local name = pandoc.utils.stringify(meta.name)
  page:insert(pandoc.Header(1, "NAME"))
  page:insert(pandoc.Para({ pandoc.Str(name), pandoc.Space(), pandoc.Str("-"), pandoc.Space() }
    .. pandoc.Inlines(pandoc.utils.stringify(meta.whatis))))
  local has_section = false
  for _, block in ipairs(blocks) do
    if block.t == "Header" and block.level == 1 then
      goto continue
    end
    if block.t == "Header" then
      block.level = block.level - 1
      if block.level == 1 then
        block = pandoc.Header(1, pandoc.utils.stringify(block):upper())
      end
      has_section = true
    elseif not has_section then
      page:insert(pandoc.Header(1, "DESCRIPTION"))
      has_section = true
    end
    page:insert(block)
    ::continue::
  end
  -- A heading begins a paragraph already.
  for i = 2, #page do
    if page[i - 1].t == "Header" and (page[i].t == "Para" or page[i].t == "RawBlock") then
      local text = pandoc.write(pandoc.Pandoc({ page[i] }), "man")
      page[i] = pandoc.RawBlock("man", (text:gsub("^%.PP\n", "")))
    end
  end
  return page
end

function Pandoc(document)
  source_folder = pandoc.utils.stringify(document.meta.source):match("^(.*/)") or ""
  document.blocks = choose_blocks(document.blocks)
  document = document:walk({ Link = link, Image = image, Code = code, CodeBlock = code_block, Table = fit_columns })
  if is_man then
    document.blocks = man_blocks(document.blocks, document.meta)
  elseif document.blocks[1] and document.blocks[1].t == "Header" then
    document.meta.pagetitle = pandoc.utils.stringify(document.blocks[1])
  end
  return document
end
