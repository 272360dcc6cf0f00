// Größe und Maß
var größe = 12;
var label = "Über – 5 €";
function grüße(name) {
  return `¡Hola, ${name}!`;
}
const π = 3.14;
const emoji = '🎉 party';
obj.naïve = 'é';
日本();
/*é*/ok();
