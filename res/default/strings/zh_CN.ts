<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>VKTCfgTools</name>
    <message>
        <source>SPI_F</source>
        <translation>SPI 帧由字节数和时间两个参数划分。</translation>
    </message>
</context>
<context>
    <name>QWidgetTextControl</name>
    <message><source>&amp;Undo</source><translation>撤销(&amp;U)</translation></message>
    <message><source>&amp;Redo</source><translation>重做(&amp;R)</translation></message>
    <message><source>Cu&amp;t</source><translation>剪切(&amp;T)</translation></message>
    <message><source>&amp;Copy</source><translation>复制(&amp;C)</translation></message>
    <message><source>&amp;Paste</source><translation>粘贴(&amp;P)</translation></message>
    <message><source>Delete</source><translation>删除</translation></message>
    <message><source>Select All</source><translation>全选</translation></message>
    <message><source>Copy &amp;Link Location</source><translation>复制链接地址(&amp;L)</translation></message>
</context>
<context>
    <name>QLineEdit</name>
    <message><source>&amp;Undo</source><translation>撤销(&amp;U)</translation></message>
    <message><source>&amp;Redo</source><translation>重做(&amp;R)</translation></message>
    <message><source>Cu&amp;t</source><translation>剪切(&amp;T)</translation></message>
    <message><source>&amp;Copy</source><translation>复制(&amp;C)</translation></message>
    <message><source>&amp;Paste</source><translation>粘贴(&amp;P)</translation></message>
    <message><source>Delete</source><translation>删除</translation></message>
    <message><source>Select All</source><translation>全选</translation></message>
</context>
<context>
    <name>QAbstractSpinBox</name>
    <message><source>&amp;Select All</source><translation>全选(&amp;S)</translation></message>
    <message><source>&amp;Step up</source><translation>增大(&amp;S)</translation></message>
    <message><source>Step &amp;down</source><translation>减小(&amp;D)</translation></message>
</context>
<context>
    <name>QScrollBar</name>
    <message><source>Scroll here</source><translation>滚动到此处</translation></message>
    <message><source>Top</source><translation>顶部</translation></message>
    <message><source>Bottom</source><translation>底部</translation></message>
    <message><source>Left edge</source><translation>左端</translation></message>
    <message><source>Right edge</source><translation>右端</translation></message>
    <message><source>Page up</source><translation>上一页</translation></message>
    <message><source>Page down</source><translation>下一页</translation></message>
    <message><source>Page left</source><translation>向左翻页</translation></message>
    <message><source>Page right</source><translation>向右翻页</translation></message>
    <message><source>Scroll up</source><translation>向上滚动</translation></message>
    <message><source>Scroll down</source><translation>向下滚动</translation></message>
    <message><source>Scroll left</source><translation>向左滚动</translation></message>
    <message><source>Scroll right</source><translation>向右滚动</translation></message>
</context>
</TS>
