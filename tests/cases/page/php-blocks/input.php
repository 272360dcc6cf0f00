<?php
$title = "Shop";
if ($count > 0) {
  echo '<p>items</p>';
}
?>
<html>
<body>
<h1><?php echo $title; ?></h1>
<?php foreach ($items as $item): ?>
  <li><?= $item->name ?></li>
<?php endforeach; ?>
<?php # a note ?>
<p>Total: <?php echo $a->b(); ?> pieces</p>
</body>
</html>
