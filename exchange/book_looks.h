#pragma once

// What all books have in common: how they look, and how they are searched. Both stand in files of their own.

namespace quillon::exchange::book
{

inline constexpr const char* Style =
    R"css(:root{color-scheme:light dark;--paper:#fdfcf9;--ink:#222;--faint:#666;--line:#d8d4c8;--link:#0b5394;--seen:#5b3a86}
@media (prefers-color-scheme:dark){:root{--paper:#1b1c1e;--ink:#e4e2dc;--faint:#a3a19a;--line:#44454a;--link:#8ab8f0;--seen:#c3a6ec}}
*{box-sizing:border-box}
html{font-size:100%;-webkit-text-size-adjust:100%}
body{margin:0 auto;padding:1.5rem 1rem 4rem;max-width:44rem;background:var(--paper);color:var(--ink);
font-family:"Hiragino Sans","Yu Gothic Medium","Noto Sans CJK JP","Noto Sans JP","Meiryo",sans-serif;
line-height:1.8;line-break:strict;overflow-wrap:anywhere;font-kerning:normal}
a{color:var(--link);text-underline-offset:.2em}
a:visited{color:var(--seen)}
h1{font-size:1.6rem;line-height:1.4;margin:.6em 0 .4em;text-wrap:balance}
h2{font-size:1.1rem;margin:2em 0 .4em;border-bottom:1px solid var(--line)}
nav,.facts,.count{color:var(--faint);font-size:.875rem}
.facts{margin:0 0 1.5em}
.text{white-space:pre-wrap;text-align:justify;tab-size:4}
ul{margin:.3em 0;padding-left:1.4em}
summary{cursor:pointer}
input[type=search]{width:100%;font:inherit;padding:.4em .6em;color:inherit;background:transparent;border:1px solid var(--line);border-radius:.4em}
:focus-visible{outline:2px solid var(--link);outline-offset:2px}
@page{margin:20mm 18mm}
@media print{body{max-width:none;padding:0;background:#fff;color:#000;font-size:10.5pt;line-height:1.7}
nav,form{display:none}a,a:visited{color:inherit;text-decoration:none}
h1,h2{break-after:avoid}p,li{orphans:3;widows:3}details>*{display:block}}
)css";

/// Texts are compared without regard to case, width and kind of kana. What is found is never taken for markup.
inline constexpr const char* Search = R"js("use strict";
(function(){
var field=document.getElementById("search"),list=document.getElementById("found"),count=document.getElementById("count"),none=document.getElementById("none");
var most=200,loading=false,rows=null;
function fold(text){return text.normalize("NFKC").toLowerCase().replace(/[\u30a1-\u30f6]/g,function(kana){return String.fromCharCode(kana.charCodeAt(0)-96);});}
function show(){
if(!rows)return;
var words=fold(field.value).split(/\s+/).filter(Boolean),hits=0;
list.textContent="";
for(var i=0;words.length&&i<rows.length;i++){
var row=rows[i];
if(!words.every(function(word){return row.folded.indexOf(word)>=0;}))continue;
if(++hits>most)continue;
var item=document.createElement("li"),link=document.createElement("a");
link.href=row.page;link.textContent=row.name;item.appendChild(link);list.appendChild(item);
}
count.textContent=words.length?String(hits)+(hits>most?" ("+most+")":""):"";
none.hidden=!words.length||hits>0;
}
function load(){
if(loading)return;
loading=true;
var script=document.createElement("script");
script.src="search-index.js";
script.onload=function(){
rows=window.quillonIndex.map(function(row){return{page:row[0],name:row[1],folded:fold(row[1]+"\n"+row[2])};});
show();
};
document.head.appendChild(script);
}
field.addEventListener("focus",load);
field.addEventListener("input",function(){load();show();});
document.getElementById("searching").addEventListener("submit",function(event){event.preventDefault();load();show();});
if(field.value)load();
})();
)js";

} // namespace quillon::exchange::book
